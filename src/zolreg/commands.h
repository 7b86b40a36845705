// The zolreg verbs (query, add, delete, export, import, init, check) behind main().
#pragma once

namespace zolreg {

// Runs one command line; returns the exit status (0 success, 1 failure).
int runTool(int argc, char** argv);

}  // namespace zolreg
