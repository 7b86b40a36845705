// Test library: a report-settings library that lacks functions the program binds, copied over a
// test root's lib/rptset.dll. Built twice: without any function, and with only CheckInstVantrel
// (the remote report service not installed) but no destination loader.
#ifdef WITH_CHECK_INST_VANTREL
extern "C" __attribute__((visibility("default"))) int CheckInstVantrel(void) {
    return 0;
}
#else
extern "C" __attribute__((visibility("default"))) int PartialRptsetVersion(void) {
    return 1;
}
#endif
