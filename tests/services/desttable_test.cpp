// The destination table (InitialDS and its loader) and the destination-ID list.
#include <algorithm>
#include <string>
#include <vector>

#include "destination/desttable.h"
#include "frame/libraries.h"
#include "frame/msgfile.h"
#include "monitor/idlist.h"
#include "services_test_util.h"

namespace svctest {
namespace {

struct BoxLog {
    std::vector<std::string> texts;
};
BoxLog g_boxes;
void RecordBox(const char* title, const char* button, const char* text) {
    g_boxes.texts.push_back(std::string(title) + "|" + button + "|" + text);
}

class DestTableTest : public ServicesTest {
  protected:
    void SetUp() override {
        ServicesTest::SetUp();
        g_boxes = {};
        SetErrorBoxSink(RecordBox);
    }
    void TearDown() override {
        SetErrorBoxSink(nullptr);
        FreeReportID();
        FreeDestTable();
        FreeRcFile();
        ServicesTest::TearDown();
    }
    // Loads a library built for these tests in place of rptset.dll.
    HMODULE LoadStandIn(const std::string& module) {
        InstallTestModule(module, "rptset.dll");
        EXPECT_TRUE(LoadRptsetDLL());
        return hLibRPTSET;
    }
    std::vector<std::string> ListedIDs() const {
        std::vector<std::string> ids;
        for (int i = 0; i < szIDnum; ++i)
            ids.emplace_back(DestList[i]);
        return ids;
    }
    bool TableEmpty() const {
        for (DestData* record : CPDestData) {
            if (record != nullptr)
                return false;
        }
        return IDnum == 0 && szIDnum == 0;
    }
};

TEST_F(DestTableTest, LoadSkipsHiddenIDsAndListsTheRest) {
    const std::string longID(150, 'L');
    for (const std::string& id :
         {std::string("SNMP"), std::string("SYSLOG"), std::string("VANTRELREPORT(HTTPS)"),
          std::string("CRITICAL ERROR LOG"), std::string("TCP_IP In-Band"), longID}) {
        CreateKey(kIDList + "\\" + id);
    }
    ASSERT_TRUE(LoadRptsetDLL());
    ASSERT_EQ(InitialDS(hLibRPTSET), 0) << Trace();
    EXPECT_EQ(IDnum, 6);
    EXPECT_EQ(szIDnum, 3);

    // The listed IDs are the records' IDs in the library's order, hidden ones left out.
    std::vector<std::string> expected;
    for (int i = 0; i < IDnum; ++i) {
        const std::string id = CPDestData[i]->ID;
        if (id != "SYSLOG" && id != "VANTRELREPORT(HTTPS)" && id != "CRITICAL ERROR LOG") {
            expected.push_back(id);
        }
    }
    EXPECT_EQ(ListedIDs(), expected);
    for (int i = 0; i < szIDnum; ++i) {
        // The display table holds the ID cut to 99 bytes; DestList holds it whole.
        EXPECT_EQ(std::string(DestDispTable[i]), std::string(DestList[i]).substr(0, 99));
    }
    EXPECT_NE(std::find(expected.begin(), expected.end(), longID), expected.end());
    EXPECT_TRUE(g_boxes.texts.empty());

    // Every record is allocated, loaded or not.
    for (DestData* record : CPDestData)
        EXPECT_NE(record, nullptr);

    // A reload after a change sees it (and frees the earlier records: the sanitizer build
    // checks for leaks). The hidden-ID test is exact: "syslog" in lower case is listed.
    HKEY list = nullptr;
    ASSERT_EQ(RegOpenKeyEx(HKEY_LOCAL_MACHINE, kIDList.c_str(), 0, KEY_ALL_ACCESS, &list), 0);
    ASSERT_EQ(RegDeleteKey(list, "SYSLOG"), ERROR_SUCCESS);
    RegCloseKey(list);
    CreateKey(kIDList + "\\syslog");
    CreateKey(kIDList + "\\Added");
    ASSERT_EQ(InitialDS(hLibRPTSET), 0);
    EXPECT_EQ(IDnum, 7);
    EXPECT_EQ(szIDnum, 5);
    const std::vector<std::string> listed = ListedIDs();
    EXPECT_NE(std::find(listed.begin(), listed.end(), "syslog"), listed.end());

    FreeDestTable();
    EXPECT_TRUE(TableEmpty());
}

TEST_F(DestTableTest, HiddenIDsAreExactAndCaseSensitive) {
    for (const char* id :
         {"SYSLOG", "CRITICAL ERROR LOG", "VANTRELREPORT(INTERNET MAIL)", "VANTRELREPORT(DIAL-UP)",
          "VANTRELREPORT(TRANSTOMANAGER)", "VANTRELREPORT(HTTPS)"}) {
        EXPECT_TRUE(IsHiddenDestID(id)) << id;
    }
    for (const char* id : {"syslog", "SYSLOG ", "VANTRELREPORT", "Critical Error Log", ""}) {
        EXPECT_FALSE(IsHiddenDestID(id)) << id;
    }
    EXPECT_FALSE(IsHiddenDestID(nullptr));
}

TEST_F(DestTableTest, LoadFailuresLeaveAnEmptyTableAndShowTheError) {
    ASSERT_TRUE(LoadRcFile("/data/E_report.rc"));
    const std::string box = "Error| ok |Function InitAllDestSetting failed.";

    // No handle: no box, nothing loaded.
    EXPECT_EQ(InitialDS(nullptr), -1);
    EXPECT_TRUE(g_boxes.texts.empty());

    // Fill the table first so each failure must also clear it.
    CreateKey(kIDList + "\\SNMP");
    ASSERT_TRUE(LoadRptsetDLL());
    ASSERT_EQ(InitialDS(hLibRPTSET), 0);
    ASSERT_EQ(szIDnum, 1);

    // The store cannot give the list (its key is gone).
    HKEY key = nullptr;
    ASSERT_EQ(RegOpenKeyEx(HKEY_LOCAL_MACHINE, "SOFTWARE\\Tavik\\ZolAlertMan\\Destination", 0,
                           KEY_ALL_ACCESS, &key),
              ERROR_SUCCESS);
    ASSERT_EQ(RegDeleteKey(key, "ID_LIST\\SNMP"), ERROR_SUCCESS);
    ASSERT_EQ(RegDeleteKey(key, "ID_LIST"), ERROR_SUCCESS);
    RegCloseKey(key);
    EXPECT_EQ(InitialDS(hLibRPTSET), -1);
    EXPECT_TRUE(TableEmpty());
    EXPECT_EQ(TraceCount("pGetAllDestSetting failed."), 1) << Trace();
    ASSERT_EQ(g_boxes.texts.size(), 1u);
    EXPECT_EQ(g_boxes.texts[0], box);

    // A library without the function (dscopy.dll has no GetAllDestSetting).
    ASSERT_TRUE(LoadDscopyDLL());
    EXPECT_EQ(InitAllDestSetting(hLibDSCOPY), -1);
    EXPECT_EQ(TraceCount("<Get GetAllDestSetting Address Failed,return -1."), 1);
    EXPECT_EQ(InitialDS(hLibDSCOPY), -1);
    EXPECT_EQ(g_boxes.texts.size(), 2u);

    // Libraries whose GetAllDestSetting fails, or claims more records than a table holds.
    FreeRptsetDLL();
    EXPECT_EQ(InitialDS(LoadStandIn("testrpt_failing")), -1);
    EXPECT_TRUE(TableEmpty());
    FreeRptsetDLL();
    EXPECT_EQ(InitialDS(LoadStandIn("testrpt_badcount")), -1);
    EXPECT_TRUE(TableEmpty());
    EXPECT_EQ(TraceCount("pGetAllDestSetting failed."), 3);
    EXPECT_EQ(g_boxes.texts.size(), 4u);
    EXPECT_EQ(g_boxes.texts.back(), box);
}

TEST_F(DestTableTest, IDListHasOneNodePerListedID) {
    for (const char* id : {"SNMP", "SYSLOG", "TCP_IP In-Band", "TCP_IP Out-of-Band"}) {
        CreateKey(kIDList + "\\" + id);
    }
    ASSERT_TRUE(LoadRptsetDLL());
    ASSERT_EQ(InitialDS(hLibRPTSET), 0);
    ASSERT_EQ(szIDnum, 3);

    ASSERT_EQ(GetReportIDformReg(hLibRPTSET), 0);
    std::vector<std::string> names;
    uint32_t expectedIndex = 0;
    for (const IDListNode* node = IDList; node != nullptr; node = node->Next) {
        names.emplace_back(node->Name);
        EXPECT_EQ(node->ReportFlag, 0u);
        EXPECT_EQ(node->Index, expectedIndex++);
    }
    EXPECT_EQ(names, ListedIDs());

    // Built again (the menu does so for each event screen): the old list is replaced.
    IDList->ReportFlag = 1;
    ASSERT_EQ(GetReportIDformReg(hLibRPTSET), 0);
    EXPECT_EQ(IDList->ReportFlag, 0u);

    FreeReportID();
    EXPECT_EQ(IDList, nullptr);
    FreeReportID();  // harmless when empty

    // No listed IDs: the list stays empty, which the menu reports.
    FreeDestTable();
    ASSERT_EQ(GetReportIDformReg(hLibRPTSET), 0);
    EXPECT_EQ(IDList, nullptr);
}

}  // namespace
}  // namespace svctest
