// Test program: brings newt up, runs the frame's suspend handler once, and reports afterwards
// that the screen came back.
#include <newt.h>

#include <clocale>
#include <cstdio>

#include "frame/menu.h"

int main() {
    std::setlocale(LC_ALL, "");
    newtInit();
    newtCls();
    newtDrawRootText(0, 0, "suspend demo");
    newtRefresh();
    suspend_callback();
    newtDrawRootText(0, 1, "resumed");
    newtRefresh();
    newtFinished();
    std::puts("suspend demo done");
    return 0;
}
