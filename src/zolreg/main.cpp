// zolreg: the command-line tool for the settings store, in the spirit of reg.exe.
#include "commands.h"

int main(int argc, char** argv) {
    return zolreg::runTool(argc, argv);
}
