// rptset.dll over a real store: the agent event catalogue and the syslog monitoring items, read
// and written through the entry points the event screens bind.
#include <malloc.h>

#include <algorithm>
#include <array>
#include <cstring>
#include <functional>
#include <string>
#include <vector>

#include "frame/libraries.h"
#include "regpaths.h"
#include "services_test_util.h"

namespace svctest {
namespace {

const std::string kAgent = ZOL_KEY_AGENTEVENT;
const std::string kSyslog = ZOL_KEY_SYSLOG;

// A record as the screens hold one: zero-filled, with 50 destination buffers of 4096 bytes.
template <class Record>
struct Held {
    Held(const char* source, const char* event) {
        std::memset(&r, 0, sizeof r);
        for (int i = 0; i < EVENT_DEST_SLOTS; ++i)
            r.lplpszDestID[i] = buffers[i].data();
        std::strcpy(r.SourceName, source);
        std::strcpy(r.EventID, event);
    }
    Held(const Held&) = delete;
    std::vector<std::array<char, DEST_TEXT_SIZE>> buffers =
        std::vector<std::array<char, DEST_TEXT_SIZE>>(EVENT_DEST_SLOTS);
    Record r;
};

class MonitorTest : public ServicesTest {
  protected:
    void SetUp() override {
        ServicesTest::SetUp();
        ASSERT_TRUE(LoadRptsetDLL());
        Bind(getAllAgnt, "GetAllAgntSetting");
        Bind(getAgnt, "GetAgntSetting");
        Bind(setAgnt, "SetAgntSetting");
        Bind(setAgntSN, "SetAgntDataForSN");
        Bind(getAllSys, "GetAllSyslogSetting");
        Bind(getSys, "GetSyslogSetting");
        Bind(setSys, "SetSyslogSetting");
        Bind(setSysSN, "SetSyslogDataForSN");
        Bind(addSys, "AddSyslogItem");
        Bind(delSys, "DelSyslogItem");
        for (const char* id : {"SNMP", "MgrOne", "VantrelReport"})
            CreateKey(kIDList + "\\" + id);
    }

    void Event(const std::string& source, const std::string& event, const char* trap = "trap",
               std::vector<std::string> dest = {}) {
        const std::string key = kAgent + "\\" + source + "\\" + event;
        SetText(key, "TrapName", trap);
        SetText(key, "DealMethod", NO_US_DEALMETHOD);
        SetDword(key, "Action", 1);
        SetDword(key, "ErrKind", 2);
        SetDword(key, "Level", 5);
        for (const std::string& id : dest)
            SetDword(key + "\\Dest", id.c_str(), 1);
    }
    void AddItem(const char* source, const char* event, const char* keyword = "I/O error") {
        Held<SyslogData> item(source, event);
        std::strcpy(item.r.Keyword1, keyword);
        std::strcpy(item.r.TrapName, "diskTrap");
        ASSERT_EQ(addSys(&item.r), 1) << source << " " << event;
    }

    // Every key and value below path, as text: equal dumps mean an unchanged store.
    std::string Dump(const std::string& path) {
        HKEY key = nullptr;
        if (RegOpenKeyEx(HKEY_LOCAL_MACHINE, path.c_str(), 0, KEY_READ, &key) != ERROR_SUCCESS)
            return "(none)";
        std::string out = "[" + path + "]\n";
        char name[4096];
        BYTE data[4096];
        for (DWORD i = 0;; ++i) {
            DWORD n = sizeof name, size = sizeof data, type = 0;
            if (RegEnumValue(key, i, name, &n, nullptr, &type, data, &size) != ERROR_SUCCESS)
                break;
            out += std::string(name) + "=" + std::to_string(type) + ":" +
                   std::string(reinterpret_cast<char*>(data), size) + "\n";
        }
        std::vector<std::string> children;
        for (DWORD i = 0;; ++i) {
            DWORD n = sizeof name;
            if (RegEnumKeyEx(key, i, name, &n, nullptr, nullptr, nullptr, nullptr) != 0)
                break;
            children.push_back(name);
        }
        RegCloseKey(key);
        for (const std::string& c : children)
            out += Dump(path + "\\" + c);
        return out;
    }
    std::string Store() { return Dump(kAgent) + Dump(kSyslog); }

    GetAllAgntSetting_fn* getAllAgnt = nullptr;
    GetAgntSetting_fn* getAgnt = nullptr;
    SetAgntSetting_fn* setAgnt = nullptr;
    SetAgntDataForSN_fn* setAgntSN = nullptr;
    GetAllSyslogSetting_fn* getAllSys = nullptr;
    GetSyslogSetting_fn* getSys = nullptr;
    SetSyslogSetting_fn* setSys = nullptr;
    SetSyslogDataForSN_fn* setSysSN = nullptr;
    AddSyslogItem_fn* addSys = nullptr;
    DelSyslogItem_fn* delSys = nullptr;
};

// Frees a catalogue as the screens do, checking each allocation on the way: destination buffers
// sized to their ID, unused slots null. Returns "source/event:id,id;" per record.
template <class Record>
std::string TakeCatalogue(Record** records, int count) {
    std::string out;
    for (int i = 0; i < count; ++i) {
        Record* r = records[i];
        out += std::string(r->SourceName) + "/" + r->EventID + ":";
        for (int s = 0; s < EVENT_DEST_SLOTS; ++s) {
            if (s < r->DestNum) {
                out += std::string(s ? "," : "") + r->lplpszDestID[s];
                EXPECT_LT(malloc_usable_size(r->lplpszDestID[s]), 100u);  // not a whole buffer
            } else {
                EXPECT_EQ(r->lplpszDestID[s], nullptr);
            }
            std::free(r->lplpszDestID[s]);
        }
        out += ";";
        std::free(r);
    }
    std::free(records);
    return out;
}

TEST_F(MonitorTest, CatalogueSlotsOrderAndAllocation) {
    AgentEventData** records = reinterpret_cast<AgentEventData**>(1);
    int count = -1, numSN = -1, numEvntID = -1;
    ASSERT_EQ(getAllAgnt(&records, &count, &numSN, &numEvntID), 0);  // no catalogue key yet
    EXPECT_EQ(records, nullptr);
    EXPECT_EQ(std::vector<int>({count, numSN, numEvntID}), std::vector<int>({0, 1, 1}));
    EXPECT_EQ(getAllAgnt(nullptr, &count, &numSN, &numEvntID), -1);

    Event("disk", "C0000002", "t", {"SNMP", "MgrOne"});
    Event("disk", "80000001");
    Event("disk", "40000003");
    Event("Apache", "40000001", "t", {"MgrOne"});
    CreateKey(kAgent + "\\Empty source");
    ASSERT_EQ(getAllAgnt(&records, &count, &numSN, &numEvntID), 0) << Trace();
    EXPECT_EQ(std::vector<int>({count, numSN, numEvntID}), std::vector<int>({4, 3, 4}));
    EXPECT_EQ(records[0]->Action, 1);
    EXPECT_STREQ(records[0]->TrapName, "t");
    EXPECT_EQ(TakeCatalogue(records, count),
              "Apache/40000001:MgrOne;disk/40000003:;disk/80000001:;disk/C0000002:MgrOne,SNMP;");

    // Syslog items likewise, with their keywords.
    AddItem("kernel", "80000010", "segfault");
    AddItem("kernel", "4000000A");
    SyslogData** items = nullptr;
    ASSERT_EQ(getAllSys(&items, &count, &numSN, &numEvntID), 0) << Trace();
    EXPECT_EQ(std::vector<int>({count, numSN, numEvntID}), std::vector<int>({2, 2, 3}));
    EXPECT_STREQ(items[1]->Keyword1, "segfault");
    EXPECT_EQ(TakeCatalogue(items, count), "kernel/4000000A:;kernel/80000010:;");
}

// The catalogue of a new installation loads whole, with every value usable as seeded.
TEST_F(MonitorTest, SeededCatalogue) {
    zoltest::ProductRoot seeded;
    zoltest::ScopedEnv zolDir("ZolDir", seeded.path().string());
    AgentEventData** events = nullptr;
    SyslogData** items = nullptr;
    int events_n = 0, items_n = 0, numSN = 0, numEvntID = 0, itemSN = 0;
    ASSERT_EQ(getAllAgnt(&events, &events_n, &numSN, &numEvntID), 0);
    ASSERT_EQ(getAllSys(&items, &items_n, &itemSN, &numEvntID), 0);
    EXPECT_GE(events_n, 100);
    EXPECT_GE(numSN - 1, 10);
    EXPECT_GE(items_n, 20);
    EXPECT_GE(itemSN - 1, 5);
    const std::string bindings = TakeCatalogue(events, events_n) + TakeCatalogue(items, items_n);
    EXPECT_NE(bindings.find(":SNMP;"), std::string::npos);
    // The trace goes to the log opened by the fixture.
    EXPECT_EQ(TraceCount("<return 0. count="), 2);
    for (const char* complaint : {"not usable", "wrong type", "too long", "not a binding"})
        EXPECT_EQ(TraceCount(complaint), 0) << complaint;
}

TEST_F(MonitorTest, AgentEventRoundTrip) {
    Event("disk", "C0000002", "diskFailure", {"SNMP"});
    Held<AgentEventData> ev("disk", "c0000002");
    std::strcpy(ev.r.DealMethod, "stale");
    ASSERT_EQ(getAgnt(&ev.r), 0) << Trace();
    EXPECT_EQ(std::string(ev.r.TrapName) + "|" + ev.r.DealMethod + "|" + ev.r.lplpszDestID[0],
              "diskFailure|" NO_US_DEALMETHOD "|SNMP");
    EXPECT_EQ(std::vector<int>({ev.r.DestNum, ev.r.Action, ev.r.ErrKind, ev.r.Level}),
              std::vector<int>({1, 1, 2, 5}));

    // Settings, a new handling method and a second ID in another spelling of its name.
    ev.r.Action = 2;
    ev.r.ErrKind = 6;
    ev.r.Level = 8;
    std::strcpy(ev.r.DealMethod, "Replace the disk.");
    std::strcpy(ev.r.lplpszDestID[0], "MGRONE");
    ev.r.ReportFlag = 1;
    ASSERT_EQ(setAgnt(&ev.r, 1), 0) << Trace();
    // Unchanged method text is not written; ErrKind 0 keeps the stored kind; flag 0 unbinds.
    std::strcpy(ev.r.DealMethod, "ignored");
    ev.r.ErrKind = 0;
    std::strcpy(ev.r.lplpszDestID[0], "snmp");
    ev.r.ReportFlag = 0;
    ASSERT_EQ(setAgnt(&ev.r, 0), 0) << Trace();

    Held<AgentEventData> back("disk", "C0000002");
    ASSERT_EQ(getAgnt(&back.r), 0);
    EXPECT_EQ(std::string(back.r.DealMethod) + "|" + back.r.lplpszDestID[0],
              "Replace the disk.|MgrOne");
    EXPECT_EQ(std::vector<int>({back.r.DestNum, back.r.Action, back.r.ErrKind, back.r.Level}),
              std::vector<int>({1, 2, 6, 8}));

    // A whole source reads as settings of no event; a missing one leaves the record alone.
    Held<AgentEventData> all("disk", EVENT_ID_ALL);
    all.r.DestNum = 7;
    ASSERT_EQ(getAgnt(&all.r), 0);
    EXPECT_EQ(all.r.DestNum, 0);
    for (auto [source, event] : {std::pair{"disk", "C0000009"},
                                 {"nothing", EVENT_ID_ALL},
                                 {"disk\\C0000002", EVENT_ID_ALL}}) {
        Held<AgentEventData> missing(source, event);
        missing.r.Level = 42;
        EXPECT_NE(getAgnt(&missing.r), 0) << source << " " << event;
        EXPECT_EQ(missing.r.Level, 42);
    }
    EXPECT_NE(getAgnt(nullptr), 0);
}

// Values a hand edit left unusable read as their defaults, traced; the event stays writable.
TEST_F(MonitorTest, UnusableStoredValuesReadAsDefaults) {
    const std::string key = kAgent + "\\disk\\C0000002";
    SetText(key, "TrapName", std::string(200, 't'));
    SetText(key, "DealMethod", std::string(2000, 'm'));
    SetDword(key, "ErrKind", 5);
    SetText(key, "Level", "7");
    SetText(key + "\\Dest", "SNMP", "1");
    SetDword(key + "\\Dest", "MgrOne", 1);
    Held<AgentEventData> ev("disk", "C0000002");
    ASSERT_EQ(getAgnt(&ev.r), 0);
    EXPECT_EQ(std::vector<size_t>({std::strlen(ev.r.TrapName), std::strlen(ev.r.DealMethod)}),
              std::vector<size_t>({80, 511}));
    EXPECT_EQ(std::vector<int>({ev.r.Action, ev.r.ErrKind, ev.r.Level, ev.r.DestNum}),
              std::vector<int>({0, 0, 0, 1}));
    EXPECT_STREQ(ev.r.lplpszDestID[0], "MgrOne");
    for (const char* line : {"TrapName is too long", "DealMethod is too long",
                             "ErrKind is not usable", "Level is not usable", "is not a binding"})
        EXPECT_EQ(TraceCount(line), 1) << line;
    ev.r.ReportFlag = 1;
    EXPECT_EQ(setAgnt(&ev.r, 0), 0);
}

TEST_F(MonitorTest, SyslogItemRoundTrip) {
    Held<SyslogData> add("kernel", "c0000001");
    std::strcpy(add.r.Keyword3, std::string(256, 'k').c_str());  // keyword 3 alone is enough
    std::strcpy(add.r.TrapName, std::string(80, 't').c_str());
    add.r.Count = 9;  // a new item starts without count, time table or action
    add.r.Action = 2;
    ASSERT_EQ(addSys(&add.r), 1) << Trace();

    Held<SyslogData> item("KERNEL", "C0000001");
    item.r.TimeTable = 77;
    ASSERT_EQ(getSys(&item.r), 0) << Trace();
    EXPECT_EQ(std::string(item.r.Keyword3), std::string(256, 'k'));
    EXPECT_STREQ(item.r.DealMethod, NO_US_DEALMETHOD);
    EXPECT_EQ(std::vector<int>({item.r.DestNum, item.r.Count, static_cast<int>(item.r.TimeTable),
                                item.r.Action}),
              std::vector<int>({0, 0, 0, 0}));

    item.r.Count = 3;
    item.r.TimeTable = 0xFF00FF;
    item.r.Action = 1;
    item.r.ErrKind = 4;
    std::strcpy(item.r.Keyword3, "not written");
    std::strcpy(item.r.lplpszDestID[0], "SNMP");
    item.r.ReportFlag = 1;
    ASSERT_EQ(setSys(&item.r, 0), 0) << Trace();
    Held<SyslogData> back("kernel", "c0000001");
    ASSERT_EQ(getSys(&back.r), 0);
    EXPECT_EQ(std::string(back.r.Keyword3), std::string(256, 'k'));
    EXPECT_EQ(std::vector<int>({back.r.DestNum, back.r.Count, static_cast<int>(back.r.TimeTable),
                                back.r.Action, back.r.ErrKind}),
              std::vector<int>({1, 3, 0xFF00FF, 1, 4}));
    EXPECT_STREQ(back.r.lplpszDestID[0], "SNMP");
}

TEST_F(MonitorTest, RefusedWritesLeaveTheStoreUnchanged) {
    Event("disk", "C0000002", "t", {"SNMP"});
    AddItem("kernel", "80000010");
    const std::string before = Store();
    using AgentEdit = std::function<void(AgentEventData&)>;
    const struct {
        const char* what;
        AgentEdit edit;
        int changed;
        int expected;
    } agentCases[] = {
        {"action 3", [](AgentEventData& r) { r.Action = 3; }, 0, -1},
        {"level 9", [](AgentEventData& r) { r.Level = 9; }, 0, -1},
        {"error kind 5", [](AgentEventData& r) { r.ErrKind = 5; }, 0, -1},
        {"report flag 2", [](AgentEventData& r) { r.ReportFlag = 2; }, 0, -1},
        {"no such event", [](AgentEventData& r) { std::strcpy(r.EventID, "C0000003"); }, 0, -1},
        {"whole source", [](AgentEventData& r) { std::strcpy(r.EventID, EVENT_ID_ALL); }, 0, -1},
        {"no ID", [](AgentEventData& r) { r.lplpszDestID[0] = nullptr; }, 0, -1},
        {"empty ID", [](AgentEventData& r) { r.lplpszDestID[0][0] = '\0'; }, 0, -1},
        {"method without terminator",
         [](AgentEventData& r) { std::memset(r.DealMethod, 'm', sizeof r.DealMethod); }, 1, -1},
        {"unknown ID", [](AgentEventData& r) { std::strcpy(r.lplpszDestID[0], "Nobody"); }, 0, -2},
    };
    for (const auto& c : agentCases) {
        Held<AgentEventData> ev("disk", "C0000002");
        ASSERT_EQ(getAgnt(&ev.r), 0);
        ev.r.Action = 2;
        std::strcpy(ev.r.lplpszDestID[0], "MgrOne");
        ev.r.ReportFlag = 1;
        c.edit(ev.r);
        EXPECT_EQ(setAgnt(&ev.r, c.changed), c.expected) << c.what;
        EXPECT_EQ(Store(), before) << c.what;
    }
    EXPECT_EQ(setAgnt(nullptr, 0), -1);

    using ItemEdit = std::function<void(SyslogData&)>;
    const std::pair<ItemEdit, int> itemCases[] = {
        {[](SyslogData& r) { r.Count = -1; }, -1},
        {[](SyslogData& r) { r.TimeTable = 0x1000000; }, -1},
        {[](SyslogData& r) { std::strcpy(r.lplpszDestID[0], "Nobody"); }, -2},
    };
    for (const auto& [edit, expected] : itemCases) {
        Held<SyslogData> item("kernel", "80000010");
        ASSERT_EQ(getSys(&item.r), 0);
        item.r.Count = 5;
        std::strcpy(item.r.lplpszDestID[0], "SNMP");
        item.r.ReportFlag = 1;
        edit(item.r);
        EXPECT_EQ(setSys(&item.r, 0), expected);
        EXPECT_EQ(Store(), before);
    }
}

TEST_F(MonitorTest, WholeSourceFlagsInOneTransaction) {
    Event("disk", "40000001");
    Event("disk", "80000002", "t", {"SNMP"});
    // The last event already reports to fifty other IDs: binding one more is refused, and the
    // events written before it are rolled back.
    std::vector<std::string> fifty;
    for (int i = 0; i < EVENT_DEST_SLOTS; ++i)
        fifty.push_back("ID" + std::to_string(i));
    ASSERT_EQ(ZolRegBeginTransaction(), ERROR_SUCCESS);
    Event("disk", "C0000003", "t", fifty);
    ASSERT_EQ(ZolRegCommitTransaction(), ERROR_SUCCESS);
    const std::string before = Store();

    Held<AgentEventData> all("DISK", EVENT_ID_ALL);
    std::strcpy(all.r.lplpszDestID[0], "mgrone");
    all.r.ReportFlag = 1;
    EXPECT_EQ(setAgntSN(&all.r), -1);
    EXPECT_EQ(Store(), before);
    Held<AgentEventData> single("disk", "C0000003");
    std::strcpy(single.r.lplpszDestID[0], "MgrOne");
    single.r.ReportFlag = 1;
    EXPECT_EQ(setAgnt(&single.r, 0), -1);  // the 51st ID of one event
    EXPECT_EQ(Store(), before);

    // With room again every event of the source is bound, then unbound.
    const std::string full = kAgent + "\\disk\\C0000003\\Dest";
    for (int i = 0; i < 10; ++i) {
        HKEY dest = nullptr;
        ASSERT_EQ(RegOpenKeyEx(HKEY_LOCAL_MACHINE, full.c_str(), 0, KEY_ALL_ACCESS, &dest),
                  ERROR_SUCCESS);
        RegDeleteValue(dest, fifty[i].c_str());
        RegCloseKey(dest);
    }
    ASSERT_EQ(setAgntSN(&all.r), 0) << Trace();
    AgentEventData** records = nullptr;
    int count = 0, numSN = 0, numEvntID = 0;
    ASSERT_EQ(getAllAgnt(&records, &count, &numSN, &numEvntID), 0);
    EXPECT_EQ(count, 3);
    for (int i = 0; i < count; ++i) {
        const auto* ids = records[i]->lplpszDestID;
        EXPECT_EQ(std::count_if(ids, ids + records[i]->DestNum,
                                [](const char* id) { return std::strcmp(id, "MgrOne") == 0; }),
                  1)
            << records[i]->EventID;
    }
    TakeCatalogue(records, count);
    all.r.ReportFlag = 0;
    ASSERT_EQ(setAgntSN(&all.r), 0);
    const std::string unbound = kAgent + "\\disk\\40000001\\Dest";
    EXPECT_EQ(Dump(unbound), "[" + unbound + "]\n");

    // Syslog items of a source, and the refusals of both: unknown ID, unknown source.
    AddItem("kernel", "80000010");
    AddItem("kernel", "80000011");
    Held<SyslogData> items("kernel", EVENT_ID_ALL);
    std::strcpy(items.r.lplpszDestID[0], "SNMP");
    items.r.ReportFlag = 1;
    ASSERT_EQ(setSysSN(&items.r), 0);
    EXPECT_EQ(
        Dump(kSyslog + "\\kernel\\80000011\\Dest"),
        "[" + kSyslog + "\\kernel\\80000011\\Dest]\nSNMP=4:" + std::string("\1\0\0\0", 4) + "\n");
    std::strcpy(items.r.lplpszDestID[0], "Nobody");
    EXPECT_EQ(setSysSN(&items.r), -2);
    std::strcpy(items.r.lplpszDestID[0], "SNMP");
    std::strcpy(items.r.SourceName, "nothing");
    EXPECT_EQ(setSysSN(&items.r), -1);
}

TEST_F(MonitorTest, AddingItemsRules) {
    AddItem("kernel", "80000010");
    const std::string before = Store();
    using Edit = std::function<void(SyslogData&)>;
    const struct {
        const char* what;
        Edit edit;
        int expected;
    } cases[] = {
        {"same event in other case", [](SyslogData& r) { std::strcpy(r.EventID, "80000010"); }, -3},
        {"source in other case", [](SyslogData& r) { std::strcpy(r.SourceName, "Kernel"); }, -4},
        {"wrong first character", [](SyslogData& r) { std::strcpy(r.EventID, "1000ABCD"); }, -1},
        {"seven characters", [](SyslogData& r) { std::strcpy(r.EventID, "4000ABC"); }, -1},
        {"not hexadecimal", [](SyslogData& r) { std::strcpy(r.EventID, "4000ABCG"); }, -1},
        {"nine characters", [](SyslogData& r) { std::strcpy(r.EventID, "4000ABCDE"); }, -1},
        {"no keyword", [](SyslogData& r) { r.Keyword1[0] = '\0'; }, -1},
        {"keyword of 257", [](SyslogData& r) { std::memset(r.Keyword2, 'k', 257); }, -1},
        {"trap name of 81", [](SyslogData& r) { std::memset(r.TrapName, 't', 81); }, -1},
        {"empty source", [](SyslogData& r) { r.SourceName[0] = '\0'; }, -1},
        {"source of two keys", [](SyslogData& r) { std::strcpy(r.SourceName, "kernel\\x"); }, -1},
        {"source of 256", [](SyslogData& r) { std::memset(r.SourceName, 's', 256); }, -1},
    };
    for (const auto& c : cases) {
        Held<SyslogData> item("kernel", "4000abcd");
        std::strcpy(item.r.Keyword1, "Out of memory");
        c.edit(item.r);
        EXPECT_EQ(addSys(&item.r), c.expected) << c.what;
        EXPECT_EQ(Store(), before) << c.what;
    }
    EXPECT_EQ(addSys(nullptr), -1);
    AddItem("kernel", "4000abcd");
}

TEST_F(MonitorTest, DeletingItemsAndSources) {
    AddItem("kernel", "80000010");
    AddItem("kernel", "80000011");
    AddItem("disk", "80000012");
    AddItem("disk", "80000013");
    Held<SyslogData> bound("kernel", "80000010");
    std::strcpy(bound.r.lplpszDestID[0], "SNMP");
    bound.r.ReportFlag = 1;
    ASSERT_EQ(setSys(&bound.r, 0), 0);
    const std::string before = Store();
    EXPECT_EQ(delSys(nullptr, "80000010"), -1);
    EXPECT_EQ(delSys("kernel", nullptr), -1);
    EXPECT_EQ(delSys("kernel\\80000010", "Dest"), -1);
    EXPECT_EQ(delSys("kernel", "80000019"), -2);
    EXPECT_EQ(delSys("nothing", EVENT_ID_ALL), -2);
    EXPECT_EQ(Store(), before);

    // An item with its bindings; the source goes with its last item.
    EXPECT_EQ(delSys("KERNEL", "80000010"), 0) << Trace();
    EXPECT_EQ(Dump(kSyslog + "\\kernel\\80000010"), "(none)");
    EXPECT_NE(Dump(kSyslog + "\\kernel"), "(none)");
    EXPECT_EQ(delSys("kernel", "80000011"), 0);
    EXPECT_EQ(Dump(kSyslog + "\\kernel"), "(none)");
    // "All": the whole source at once.
    EXPECT_EQ(delSys("disk", EVENT_ID_ALL), 0);
    EXPECT_EQ(Dump(kSyslog), "[" + kSyslog + "]\n");
}

}  // namespace
}  // namespace svctest
