// Building and freeing the destination-ID selection list.
#include "frame/screens.h"

#include <cstring>
#include <new>

IDListNode* IDList = nullptr;

void FreeReportID() {
    ZOL_TRACE(TRACE_LEVEL_TRACE, ">");
    IDListNode* node = IDList;
    while (node != nullptr) {
        IDListNode* next = node->Next;
        delete node;
        node = next;
    }
    IDList = nullptr;
    ZOL_TRACE(TRACE_LEVEL_TRACE, "<");
}

int GetReportIDformReg(HMODULE rptsetLib) {
    ZOL_TRACE(TRACE_LEVEL_TRACE, "> [IN] hLibRPTSET=%p", rptsetLib);
    // The main menu builds the list each time an event screen is chosen: start over.
    FreeReportID();

    IDListNode** tail = &IDList;
    for (int i = 0; i < szIDnum && i < DEST_MAX_RECORDS; ++i) {
        auto* node = new (std::nothrow) IDListNode{};
        if (node == nullptr) {
            ZOL_TRACE(TRACE_LEVEL_FAILURE, "<IDList malloc failed.");
            FreeReportID();
            return -1;
        }
        const std::size_t n = strnlen(DestList[i], sizeof node->Name - 1);
        std::memcpy(node->Name, DestList[i], n);
        node->ReportFlag = 0;
        node->Index = static_cast<uint32_t>(i);
        *tail = node;
        tail = &node->Next;
    }
    ZOL_TRACE(TRACE_LEVEL_TRACE, "<return 0.");
    return 0;
}
