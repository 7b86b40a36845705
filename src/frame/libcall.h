// Calling a service library's function by name: one template that binds the function from any
// library handle at the moment of the call, calls it, judges its result by the function's own
// success test, and traces a missing function or a failed call in one style. Each library's
// wrappers (rptset_calls.h, dscopy_calls.h, logacc_calls.h) are built on it and declare their
// functions in a table of LibFunction constants.
#pragma once

#include <zolwin.h>

#include <utility>

// How a library function reports success.
namespace libresult {
inline bool Zero(int r) {
    return r == 0;
}
inline bool NonZero(int r) {
    return r != 0;
}
inline bool One(int r) {
    return r == 1;
}
inline bool NotMinusOne(int r) {
    return r != -1;
}
// Results the program does not judge (the caller looks at the value itself).
inline bool Any(int) {
    return true;
}
}  // namespace libresult

// One exported function: its name and the test of its result that means success. Fn is its
// type as the library defines it (rptset_api.h and the other *_api.h headers).
template <class Fn>
struct LibFunction {
    const char* name;
    bool (*succeeded)(int result);
};

// Looks a function up by name in any loaded library, as its real type: null when the handle is
// null or the library lacks the name.
template <class Fn>
Fn* BindFromHandle(HMODULE lib, const char* name) {
    if (lib == nullptr || name == nullptr)
        return nullptr;
    // FARPROC is the generic function pointer: converting it back to the real type is the
    // documented use of GetProcAddress.
    return reinterpret_cast<Fn*>(GetProcAddress(lib, name));
}

// The outcome of one call.
struct LibResult {
    enum class Status { Unbound, Failed, Succeeded };
    Status status = Status::Unbound;
    int value = 0;  // what the function returned (0 when it was not found)

    bool ok() const { return status == Status::Succeeded; }
    bool unbound() const { return status == Status::Unbound; }
    explicit operator bool() const { return ok(); }
};

// Binds fn from lib and calls it with args. A missing function is traced as
// "<Gets <name>  Address Failed." and a result its test refuses as
// "<Calls <name>  Function Failed, returned <value>.", both at the error level; the caller adds
// its own exit line and any message the administrator must see.
template <class Fn, class... Args>
LibResult CallLibrary(HMODULE lib, const LibFunction<Fn>& fn, Args&&... args) {
    Fn* bound = BindFromHandle<Fn>(lib, fn.name);
    if (bound == nullptr) {
        ZOL_TRACE(TRACE_LEVEL_ERROR, "<Gets %s  Address Failed.", fn.name);
        return {};
    }
    const int value = bound(std::forward<Args>(args)...);
    if (!fn.succeeded(value)) {
        ZOL_TRACE(TRACE_LEVEL_ERROR, "<Calls %s  Function Failed, returned %d.", fn.name, value);
        return {LibResult::Status::Failed, value};
    }
    return {LibResult::Status::Succeeded, value};
}
