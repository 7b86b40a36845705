// A small library for the loader tests: one function to bind and call.
extern "C" __attribute__((visibility("default"))) int zol_test_answer(int x) {
    return x * 2 + 42;
}
