// A program that traces before any TraceLogInit: the line must be dropped quietly.
#include "zolwin.h"

int main() {
    ZOL_TRACE(TRACE_LEVEL_ERROR, "before TraceLogInit");
    return 0;
}
