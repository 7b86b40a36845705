// The destination table (InitialDS and its loader) and the destination-ID list.
#include <algorithm>
#include <string>
#include <vector>

#include "frame/libraries.h"
#include "frame/msgfile.h"
#include "frame/screens.h"
#include "services_test_util.h"

namespace svctest {
namespace {

std::vector<std::string> g_boxes;
void RecordBox(const char* title, const char* button, const char* text) {
    g_boxes.push_back(std::string(title) + "|" + button + "|" + text);
}

class DestTableTest : public ServicesTest {
  protected:
    void SetUp() override {
        ServicesTest::SetUp();
        g_boxes.clear();
        SetErrorBoxSink(RecordBox);
        ASSERT_TRUE(LoadRptsetDLL());
    }
    void TearDown() override {
        SetErrorBoxSink(nullptr);
        FreeReportID();
        FreeDestTable();
        FreeRcFile();
        ServicesTest::TearDown();
    }
    std::vector<std::string> Listed() const { return {DestList, DestList + szIDnum}; }
    bool TableEmpty() const {
        return IDnum == 0 && szIDnum == 0 &&
               std::all_of(std::begin(CPDestData), std::end(CPDestData),
                           [](DestData* d) { return d == nullptr; });
    }
    void DeleteKey(const std::string& parent, const char* name) {
        HKEY key = nullptr;
        ASSERT_EQ(RegOpenKeyEx(HKEY_LOCAL_MACHINE, parent.c_str(), 0, KEY_ALL_ACCESS, &key), 0);
        EXPECT_EQ(RegDeleteKey(key, name), ERROR_SUCCESS);
        RegCloseKey(key);
    }
};

TEST_F(DestTableTest, LoadSkipsHiddenIDsAndListsTheRest) {
    const std::string longID(150, 'L');
    for (std::string id : {"SNMP", "SYSLOG", "VANTRELREPORT(HTTPS)", "CRITICAL ERROR LOG",
                           "TCP_IP In-Band", longID.c_str(), "VANTRELREPORT(INTERNET MAIL)",
                           "VANTRELREPORT(DIAL-UP)", "VANTRELREPORT(TRANSTOMANAGER)"}) {
        CreateKey(kIDList + "\\" + id);
    }
    ASSERT_EQ(InitialDS(hLibRPTSET), 0) << Trace();
    EXPECT_EQ(IDnum, 9);
    // Listed in the store's order, hidden IDs left out.
    const std::vector<std::string> expected = {longID, "SNMP", "TCP_IP In-Band"};
    EXPECT_EQ(Listed(), expected);
    for (int i = 0; i < szIDnum; ++i) {  // the display table holds each ID cut to 99 bytes
        EXPECT_EQ(std::string(DestDispTable[i]), expected[i].substr(0, 99));
    }
    EXPECT_TRUE(g_boxes.empty());

    // A reload sees changes (and frees the earlier records: the sanitizer build checks leaks).
    // The hidden-ID test is exact: "syslog" in lower case is listed.
    DeleteKey(kIDList, "SYSLOG");
    CreateKey(kIDList + "\\syslog");
    ASSERT_EQ(InitialDS(hLibRPTSET), 0);
    EXPECT_EQ(Listed(), (std::vector<std::string>{longID, "SNMP", "syslog", "TCP_IP In-Band"}));

    EXPECT_FALSE(IsHiddenDestID(nullptr));
    FreeDestTable();
    EXPECT_TRUE(TableEmpty());
}

TEST_F(DestTableTest, LoadFailuresLeaveAnEmptyTableAndShowTheError) {
    ASSERT_TRUE(LoadRcFile("/data/E_report.rc"));
    const std::string box = "Error| ok |Function InitAllDestSetting failed.";
    EXPECT_EQ(InitialDS(nullptr), -1);  // no handle: no box
    EXPECT_TRUE(g_boxes.empty());

    // Each failure must also clear a loaded table. First: the store has no list.
    CreateKey(kIDList + "\\SNMP");
    ASSERT_EQ(InitialDS(hLibRPTSET), 0);
    DeleteKey(kIDList, "SNMP");
    DeleteKey(kIDList.substr(0, kIDList.rfind('\\')), "ID_LIST");
    EXPECT_EQ(InitialDS(hLibRPTSET), -1);
    EXPECT_TRUE(TableEmpty());
    EXPECT_EQ(TraceCount("pGetAllDestSetting failed."), 1) << Trace();
    EXPECT_EQ(g_boxes, std::vector<std::string>{box});

    // A library without the function (dscopy.dll has none of that name).
    ASSERT_TRUE(LoadDscopyDLL());
    EXPECT_EQ(InitialDS(hLibDSCOPY), -1);
    EXPECT_EQ(TraceCount("<Get GetAllDestSetting Address Failed,return -1."), 1);

    // Libraries whose GetAllDestSetting fails, or claims more records than a table holds.
    for (const char* module : {"testrpt_failing", "testrpt_badcount"}) {
        FreeRptsetDLL();
        InstallTestModule(module, "rptset.dll");
        ASSERT_TRUE(LoadRptsetDLL());
        EXPECT_EQ(InitialDS(hLibRPTSET), -1) << module;
        EXPECT_TRUE(TableEmpty());
    }
    EXPECT_EQ(TraceCount("pGetAllDestSetting failed."), 3);
    EXPECT_EQ(g_boxes, std::vector<std::string>(4, box));
}

TEST_F(DestTableTest, IDListHasOneNodePerListedID) {
    for (const char* id : {"SNMP", "SYSLOG", "TCP_IP In-Band", "TCP_IP Out-of-Band"}) {
        CreateKey(kIDList + "\\" + id);
    }
    ASSERT_EQ(InitialDS(hLibRPTSET), 0);
    ASSERT_EQ(GetReportIDformReg(hLibRPTSET), 0);
    std::vector<std::string> names;
    for (const IDListNode* node = IDList; node != nullptr; node = node->Next) {
        EXPECT_EQ(node->ReportFlag, 0u);
        EXPECT_EQ(node->Index, names.size());
        names.emplace_back(node->Name);
    }
    EXPECT_EQ(names.size(), 3u);
    EXPECT_EQ(names, Listed());

    // Built again (the menu does so for each event screen): the old list is replaced.
    IDList->ReportFlag = 1;
    ASSERT_EQ(GetReportIDformReg(hLibRPTSET), 0);
    EXPECT_EQ(IDList->ReportFlag, 0u);

    // No listed IDs: the list stays empty, which the menu reports.
    FreeDestTable();
    ASSERT_EQ(GetReportIDformReg(hLibRPTSET), 0);
    EXPECT_EQ(IDList, nullptr);
}

}  // namespace
}  // namespace svctest
