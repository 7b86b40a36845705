// The rules of the event-monitoring screens without a terminal: the catalogue searches of the
// two lists, the destination-ID lists of the per-item screens, the lists of choices, the
// handling-method marker, the keyword cut, the count and time-table entries and the checks of
// the add dialog.
#include <gtest/gtest.h>
#include <zolwin.h>

#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

#include "monitor/monitor.h"
#include "monitor/reportpanel.h"
#include "product_root.h"

namespace {

// A catalogue as the library hands it back (malloc'd, so that the owner's free is the right one).
template <class Record>
void Load(Catalogue<Record>& catalogue,
          const std::vector<std::vector<const char*>>& rows,  // source, event, trap
          int numSN, int numEvntID) {
    auto** records = static_cast<Record**>(std::calloc(rows.size() + 1, sizeof(Record*)));
    for (std::size_t i = 0; i < rows.size(); ++i) {
        if (rows[i].empty())
            continue;  // a null record
        auto* r = static_cast<Record*>(std::calloc(1, sizeof(Record)));
        std::strcpy(r->SourceName, rows[i][0]);
        std::strcpy(r->EventID, rows[i][1]);
        std::strcpy(r->TrapName, rows[i][2]);
        r->lplpszDestID[0] = strdup("SNMP");  // freed with the catalogue
        r->DestNum = 1;
        records[i] = r;
    }
    ASSERT_TRUE(catalogue.Adopt(records, static_cast<int>(rows.size()), numSN, numEvntID));
}

using Names = std::vector<std::string>;

// A destination-ID list over nodes kept in a vector.
struct IDChain {
    explicit IDChain(const std::vector<const char*>& names) : nodes(names.size()) {
        for (std::size_t i = 0; i < names.size(); ++i) {
            std::strcpy(nodes[i].Name, names[i]);
            nodes[i].Index = static_cast<uint32_t>(i);
            nodes[i].Next = i + 1 < names.size() ? &nodes[i + 1] : nullptr;
        }
    }
    IDListNode* head() { return nodes.empty() ? nullptr : &nodes[0]; }
    std::vector<IDListNode> nodes;
};

Names NamesOf(const std::vector<IDListNode*>& nodes) {
    Names names;
    for (const IDListNode* node : nodes)
        names.emplace_back(node->Name);
    return names;
}

}  // namespace

// Sources in order of first appearance, never sorted; an empty name never listed; event IDs of a
// source in catalogue order with duplicates; the agent trap from the first match, the syslog trap
// from the last; slot counts the library asked for bound the lists.
TEST(MonitorCatalogue, SourcesEventsAndTraps) {
    AgentCatalogue agents;
    Load(agents,
         {{"Zeta", "C0000001", "zetaTrap1"},
          {"alpha", "40000002", "alphaTrap"},
          {},
          {"", "40000009", "noSource"},
          {"Zeta", "80000003", "zetaTrap3"},
          {"Zeta", "C0000001", "zetaTrapAgain"}},
         4, 4);
    EXPECT_EQ(agents.FindAllSourceName(), 2);
    EXPECT_EQ(agents.sourceNames, (Names{"Zeta", "alpha"}));
    EXPECT_EQ(agents.FindEventID("Zeta"), 3);
    EXPECT_EQ(agents.eventIDs, (Names{"C0000001", "80000003", "C0000001"}));
    EXPECT_EQ(agents.FindEventID("zeta"), 0) << "names compare exactly";

    std::string trap = "kept";
    EXPECT_EQ(FindTrap(agents, "Zeta", "C0000001", trap), 0);
    EXPECT_EQ(trap, "zetaTrap1");
    EXPECT_EQ(FindTrap(agents, "alpha", "C0000001", trap), -1);
    EXPECT_EQ(trap, "zetaTrap1") << "a failed lookup leaves the name alone";

    SyslogCatalogue items;
    Load(items, {{"kernel", "C0000001", "first"}, {"kernel", "C0000001", "second"}}, 2, 3);
    items.FindAllSourceName();
    EXPECT_EQ(items.sourceNames, (Names{"kernel"}));
    EXPECT_EQ(SyslogTrapName(items, "kernel", "C0000001"), "second");
    EXPECT_EQ(SyslogTrapName(items, "kernel", "C0000002"), "");

    // Fewer slots than names: the lists stop where the slots do.
    AgentCatalogue narrow;
    Load(narrow, {{"a", "1", ""}, {"b", "2", ""}, {"c", "3", ""}, {"a", "4", ""}, {"a", "5", ""}},
         2, 2);
    EXPECT_EQ(narrow.FindAllSourceName(), 2);
    EXPECT_EQ(narrow.FindEventID("a"), 2);
    EXPECT_EQ(narrow.eventIDs, (Names{"1", "4"}));

    // Reloading frees the earlier catalogue (the sanitizer build sees a leak otherwise).
    Load(narrow, {}, 1, 1);
    EXPECT_EQ(narrow.FindAllSourceName(), 0);
    EXPECT_EQ(narrow.data.count(), 0);
}

// The IDs a per-item screen lists: up to an empty name; a whole source leaves out exactly the
// remote report service's own ID, in any case, but not its delivery IDs. Marking compares
// without regard to case. Add and Remove move by node index and only from their own list.
TEST(MonitorDestinations, ListingMarkingAndMoves) {
    IDChain chain({"SNMP", "VantrelReport", "VANTRELREPORT(HTTPS)", "Ops", "", "After"});
    EXPECT_EQ(NamesOf(ListedIDNodes(chain.head(), false)),
              (Names{"SNMP", "VantrelReport", "VANTRELREPORT(HTTPS)", "Ops"}));
    EXPECT_EQ(NamesOf(ListedIDNodes(chain.head(), true)),
              (Names{"SNMP", "VANTRELREPORT(HTTPS)", "Ops"}));
    EXPECT_TRUE(ListedIDNodes(nullptr, true).empty());

    chain.nodes[3].ReportFlag = 1;  // cleared by marking
    char snmp[] = "snmp", vantrel[] = "VANTRELREPORT", gone[] = "Gone";
    char* bound[] = {snmp, vantrel, gone};
    MarkReportIDs(chain.head(), bound, 2);
    EXPECT_EQ(chain.nodes[0].ReportFlag, 1u);
    EXPECT_EQ(chain.nodes[1].ReportFlag, 1u);
    EXPECT_EQ(chain.nodes[3].ReportFlag, 0u);

    DestinationChoice choice(ListedIDNodes(chain.head(), false));
    EXPECT_EQ(NamesOf(choice.reportTo()), (Names{"SNMP", "VantrelReport"}));
    EXPECT_EQ(NamesOf(choice.others()), (Names{"VANTRELREPORT(HTTPS)", "Ops"}));
    struct Move {
        bool add;
        int index;
        bool moved;
        Names reportTo;
    };
    const Move moves[] = {
        {true, 0, false, {"SNMP", "VantrelReport"}},  // index 0 is reported to already
        {true, 3, true, {"SNMP", "VantrelReport", "Ops"}},
        {false, 0, true, {"VantrelReport", "Ops"}},
        {false, 0, false, {"VantrelReport", "Ops"}},
        {true, 0, true, {"VantrelReport", "Ops", "SNMP"}},  // appended at the end
        {true, 7, false, {"VantrelReport", "Ops", "SNMP"}},
    };
    for (const Move& m : moves) {
        EXPECT_EQ(m.add ? choice.Add(m.index) : choice.Remove(m.index), m.moved) << m.index;
        EXPECT_EQ(NamesOf(choice.reportTo()), m.reportTo) << m.index;
        EXPECT_EQ(choice.ReportIDnum() + choice.NoReportIDnum(), 4);
    }
    for (const IDListNode* node : choice.reportTo())
        EXPECT_EQ(node->ReportFlag, 1u) << node->Name;
    for (const IDListNode* node : choice.others())
        EXPECT_EQ(node->ReportFlag, 0u) << node->Name;
}

// Every listed ID is written once, in order, with its flag, whatever the earlier writes gave; the
// screen closes when one of them went through.
TEST(MonitorDestinations, EveryIDIsWrittenWhateverTheOthersGave) {
    IDChain chain({"SNMP", "Ops", "Night"});
    chain.nodes[1].ReportFlag = 1;
    const std::vector<IDListNode*> nodes = ListedIDNodes(chain.head(), false);
    std::unique_ptr<AgentRecord> record = AgentRecord::Allocate("test record");
    ASSERT_NE(record, nullptr);
    for (const std::vector<bool>& results :
         {std::vector<bool>{false, false, false}, std::vector<bool>{false, true, false}}) {
        std::vector<std::pair<std::string, int>> calls;
        std::size_t call = 0;
        const bool done =
            reportpanel::WriteEveryID(**record, nodes, [&](AgentEventData& r) -> BOOL {
                calls.emplace_back(r.lplpszDestID[0], r.ReportFlag);
                return results[call++] ? TRUE : FALSE;
            });
        EXPECT_EQ(done, results[1]);
        EXPECT_EQ(calls, (std::vector<std::pair<std::string, int>>{
                             {"SNMP", 0}, {"Ops", 1}, {"Night", 0}}));
    }
    EXPECT_FALSE(reportpanel::WriteEveryID(**record, {}, [](AgentEventData&) { return TRUE; }))
        << "with no ID nothing is written and the screen stays";
}

// Where the lists of choices start for stored values, and what the handling-method entry shows
// and writes back.
TEST(MonitorChoices, ListRowsAndHandlingMethod) {
    const int kindRows[] = {0, 1, 2, 0, 4, 0, 3, 0};  // stored kind 0..7 -> row
    for (int kind = 0; kind < 8; ++kind) {
        const int row = ChoiceRow(kErrorKindChoices, kind);
        EXPECT_EQ(row, kindRows[kind]) << kind;
        if (kind != 0 && kind != 5 && kind != 7) {
            EXPECT_EQ(kErrorKindChoices[row].value, kind);
        }
    }
    EXPECT_EQ(kErrorKindChoices[ChoiceRow(kErrorKindChoices, 5)].value, 3)
        << "an unlisted kind is written back as application";
    EXPECT_EQ(ChoiceRow(kActionChoices, 2), 2);
    EXPECT_EQ(ChoiceRow(kActionChoices, 9), 0);
    EXPECT_EQ(LevelRow(8), 8);
    EXPECT_EQ(LevelRow(9), 0);
    EXPECT_EQ(LevelRow(-1), 0);

    struct Case {
        const char* stored;
        std::string entry;
        int changed;
        std::string after;
    };
    const std::string euc = "\xa4\xa2";  // one two-byte character
    const Case cases[] = {
        {NO_US_DEALMETHOD, "", 0, NO_US_DEALMETHOD},
        {"Call " NO_US_DEALMETHOD, "", 0, "Call " NO_US_DEALMETHOD},
        {NO_US_DEALMETHOD, "Replace the fan.", 1, "Replace the fan."},
        {"Replace the fan.", "", 1, ""},
        {"Replace the fan.", "Replace the fan.", 0, "Replace the fan."},
        {"", std::string(600, 'x'), 1, std::string(511, 'x')},
        {"", std::string(510, 'x') + euc, 1, std::string(510, 'x')},
    };
    for (const Case& c : cases) {
        EXPECT_EQ(DealMethodShown(c.stored),
                  std::strstr(c.stored, NO_US_DEALMETHOD) ? "" : std::string(c.stored));
        char stored[512] = {};
        std::strcpy(stored, c.stored);
        EXPECT_EQ(ApplyDealMethod(stored, c.entry), c.changed) << c.stored << " / " << c.entry;
        EXPECT_EQ(std::string(stored), c.after) << c.stored;
    }
}

// Keywords fill 40 columns; a longer one is cut at 40 bytes, or 39 when the 40th would split a
// two-byte character; the count entry reads a decimal number or 0.
TEST(MonitorSyslogItem, KeywordCutAndCount) {
    const std::string kanji = "\xb4\xc1";
    struct Case {
        std::string keyword;
        int single;  // AffirmSingleCharASCNum
        std::string shown;
    };
    const Case cases[] = {
        {"", -1, std::string(40, ' ')},
        {std::string(39, 'a'), -1, std::string(39, 'a') + " "},
        {std::string(40, 'a'), 40, std::string(40, 'a')},
        {std::string(41, 'a'), 40, std::string(40, 'a')},
        {std::string(39, 'a') + kanji + "b", 39, std::string(39, 'a')},
        {std::string(38, 'a') + kanji + "b", 38, std::string(38, 'a') + kanji},
        {kanji + kanji + std::string(40, '%'), 36, kanji + kanji + std::string(36, '%')},
    };
    for (const Case& c : cases) {
        EXPECT_EQ(AffirmSingleCharASCNum(c.keyword.c_str()), c.single) << c.keyword;
        EXPECT_EQ(KeywordLabelText(c.keyword.c_str()).value_or("(none)"), c.shown) << c.keyword;
    }
    EXPECT_EQ(AffirmSingleCharASCNum(nullptr), -1);
    EXPECT_FALSE(KeywordLabelText(nullptr).has_value());

    const std::pair<const char*, int32_t> counts[] = {
        {"", 0},
        {"7", 7},
        {"000012", 12},
        {"12ab", 12},
        {"abc", 0},
        {"-5", 0},
        {"2147483647", INT32_MAX},
        {"99999999999", INT32_MAX},
    };
    for (const auto& [text, count] : counts)
        EXPECT_EQ(CountFromText(text), count) << text;
}

// The time table through the real dscopy.dll: a text that names no hour (invalid or empty) keeps
// the one accepted before; without the library nothing converts.
TEST(MonitorSyslogItem, TimeTableKeepsTheFormerOneForTextsOfNoHour) {
    zoltest::ProductRoot root(false);
    HMODULE dscopy = LoadLibrary((root.path() / "lib" / "dscopy.dll").c_str());
    ASSERT_NE(dscopy, nullptr);
    EXPECT_EQ(TimeTableText::Show(dscopy, 0x3FF00), "8-17");
    EXPECT_EQ(TimeTableText::Show(dscopy, 0), "");
    TimeTableText table{dscopy, TimeTableText::Show(dscopy, 0xFFFFFF)};
    EXPECT_EQ(table.accepted, "0-23");
    struct Step {
        const char* typed;
        uint32_t value;
        const char* accepted;
    };
    const Step steps[] = {
        {"8-17", 0x3FF00, "8-17"},  {"", 0x3FF00, "8-17"},     {"25", 0x3FF00, "8-17"},
        {"22-2", 0xC00007, "22-2"}, {"a-b", 0xC00007, "22-2"},
    };
    for (const Step& s : steps) {
        EXPECT_EQ(table.Accept(s.typed), s.value) << s.typed;
        EXPECT_EQ(table.accepted, s.accepted) << s.typed;
    }
    FreeLibrary(dscopy);

    TimeTableText unbound{nullptr, "8-17"};
    EXPECT_EQ(unbound.Accept("9-10"), 0u);
    EXPECT_EQ(TimeTableText::Show(nullptr, 0xFFFFFF), "");
}

namespace {

struct AddCase {
    SyslogAddInput input;  // source, event ID, keywords, trap name, handling method
    const char* fault;     // null: accepted
    int keyword;           // the keyword a length refusal names
};

std::vector<AddCase> AddCases() {
    const std::string k256(256, 'k'), k257(257, 'k'), t80(80, 't'), t81(81, 't');
    const std::string d511(511, 'd'), d512(512, 'd');
    return {
        {{"mysvc", "4000ABCD", {"disk", "", ""}, "trap", "call"}, nullptr, 0},
        {{"mysvc", "c0000001", {"disk", "", ""}, "", ""}, nullptr, 0},
        {{"mysvc", "8fffffff", {"disk", "", ""}, "", ""}, nullptr, 0},
        {{"mysvc", "1000ABCD", {"disk", "", ""}, "", ""}, "SYSLOGADD_InvalidEventError_ID", 0},
        {{"mysvc", "4000ABC", {"disk", "", ""}, "", ""}, "SYSLOGADD_InvalidEventError_ID", 0},
        {{"mysvc", "4000ABCG", {"disk", "", ""}, "", ""}, "SYSLOGADD_InvalidEventError_ID", 0},
        {{"mysvc", "4000ABCDE", {"disk", "", ""}, "", ""}, "SYSLOGADD_InvalidEventError_ID", 0},
        {{"mysvc", "4000ABCD", {"disk", k256, ""}, t80, d511}, nullptr, 0},
        {{"mysvc", "4000ABCD", {"disk", "", k257}, "", ""}, "SYSLOGADD_KeywordError_ID", 3},
        {{"mysvc", "4000ABCD", {"disk", "", ""}, t81, ""}, "SYSLOGADD_TrapnameError_ID", 0},
        {{"mysvc", "4000ABCD", {"disk", "", ""}, "", d512}, "SYSLOGADD_DealmethodError_ID", 0},
        {{"mysvc", "4000ABCD", {"", "", ""}, "", ""}, "SYSLOGADD_NotCompleteError_ID", 0},
        {{"mysvc", "4000ABCD", {"", "", "only"}, "", ""}, nullptr, 0},
        {{"", "4000ABCD", {"disk", "", ""}, "", ""}, "SYSLOGADD_NotCompleteError_ID", 0},
        {{"mysvc", "", {"disk", "", ""}, "", ""}, "SYSLOGADD_NotCompleteError_ID", 0},
        // The first failing check decides.
        {{"mysvc", "x", {"disk", k257, ""}, t81, ""}, "SYSLOGADD_KeywordError_ID", 2},
        {{"mysvc", "x", {"disk", "", ""}, t81, d512}, "SYSLOGADD_TrapnameError_ID", 0},
        {{"", "x", {"disk", "", ""}, "", ""}, "SYSLOGADD_NotCompleteError_ID", 0},
    };
}

}  // namespace

// The add dialog's checks in their order, the event ID form, and the record they fill.
TEST(MonitorSyslogAdd, ChecksInOrderAndTheRecord) {
    for (const AddCase& c : AddCases()) {
        int keyword = 0;
        const char* fault = SyslogAddFault(c.input, &keyword);
        EXPECT_STREQ(fault, c.fault) << c.input.source << " / " << c.input.eventID;
        EXPECT_EQ(keyword, c.keyword) << (c.fault ? c.fault : "accepted");
    }

    SyslogData record{};
    FillSyslogAddRecord({"mysvc", "4000ABCD", {"disk", "", "%s %n"}, "trap", "call"}, record);
    EXPECT_STREQ(record.SourceName, "mysvc");
    EXPECT_STREQ(record.EventID, "4000ABCD");
    EXPECT_STREQ(record.Keyword1, "disk");
    EXPECT_STREQ(record.Keyword3, "%s %n");
    EXPECT_STREQ(record.TrapName, "trap");
    EXPECT_STREQ(record.DealMethod, "call");
    EXPECT_EQ(record.Count, 0);
    EXPECT_EQ(record.lplpszDestID[0], nullptr);
    EXPECT_EQ(SyslogTestLine(record), "[TEST - AlertManager] disk  %s %n");
}
