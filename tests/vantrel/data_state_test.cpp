// The machine, vendor and option data screens' rules, driven through their state without a
// terminal: each field's limits in bytes (EUC-JP texts included), the order of the vendor
// messages, what the machine OK writes in which order, and the option rows and refusals.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "remote/vantrel_data.h"

namespace {

// Two EUC-JP bytes each.
const std::string kKanji = "\xbb\xb3";
std::string Kanji(std::size_t n) {
    std::string text;
    for (std::size_t i = 0; i < n; ++i)
        text += kKanji;
    return text;
}

MachEntries GoodMachine() {
    return {"host", "product", "maker", "L-1", "Debian GNU/Linux", "12", "a comment"};
}

TEST(MachineData, EachFieldIsRefusedOneByteBeyondItsLimitAndWhenRequiredButEmpty) {
    struct Case {
        const char* what;
        std::string MachEntries::*field;
        std::size_t limit;
        bool required;
    };
    const Case cases[] = {
        {"host", &MachEntries::hostName, 40, true},
        {"product", &MachEntries::productName, 40, true},
        {"manufacturer", &MachEntries::manufacturer, 16, true},
        {"licence", &MachEntries::licenseNo, 16, true},
        {"version", &MachEntries::osVersion, 32, false},
        {"os name", &MachEntries::osName, 30, true},
    };
    for (const Case& c : cases) {
        MachEntries e = GoodMachine();
        e.*c.field = std::string(c.limit, 'x');
        EXPECT_TRUE(MachEntriesValid(e)) << c.what;
        e.*c.field += 'x';
        EXPECT_FALSE(MachEntriesValid(e)) << c.what;
        // EUC-JP: the limit counts bytes, so half as many kanji fill it.
        e.*c.field = Kanji(c.limit / 2);
        EXPECT_TRUE(MachEntriesValid(e)) << c.what;
        e.*c.field += "x";
        EXPECT_EQ(MachEntriesValid(e), c.limit % 2 == 1) << c.what;
        e.*c.field = "";
        EXPECT_EQ(MachEntriesValid(e), !c.required) << c.what;
    }
    // The comment is not a field of the record's rules.
    MachEntries e = GoodMachine();
    e.comment = std::string(300, 'c');
    EXPECT_TRUE(MachEntriesValid(e));

    VntMachData record{};
    EXPECT_EQ(CheckMachData(&record), 0);
    EXPECT_EQ(CheckMachData(nullptr), 0);
}

TEST(MachineData, OkWritesTheRecordThenTheCommentAndRefusesALongCommentAfterTheRecord) {
    struct Case {
        const char* what;
        MachEntries entries;
        bool recordOk;
        LibResult commentResult;
        MachSave expected;
        std::vector<std::string> calls;
    };
    const LibResult written{LibResult::Status::Succeeded, 1};
    const LibResult failed{LibResult::Status::Failed, 0};
    MachEntries bad = GoodMachine();
    bad.licenseNo = "";
    MachEntries c256 = GoodMachine();
    c256.comment = std::string(256, 'c');
    MachEntries c257 = GoodMachine();
    c257.comment = std::string(257, 'c');
    MachEntries j257 = GoodMachine();
    j257.comment = Kanji(128) + "x";  // 257 bytes, 129 characters
    const Case cases[] = {
        {"silent refusal", bad, true, written, MachSave::Refused, {}},
        {"256 written", c256, true, written, MachSave::Saved, {"record host", "comment 256"}},
        {"257 refused after the record",
         c257,
         true,
         written,
         MachSave::CommentTooLong,
         {"record host"}},
        {"257 bytes of EUC-JP", j257, true, written, MachSave::CommentTooLong, {"record host"}},
        {"record failed", c256, false, written, MachSave::RecordFailed, {"record host"}},
        {"comment unbound",
         c256,
         true,
         LibResult{},
         MachSave::CommentUnbound,
         {"record host", "comment 256"}},
        {"comment failed",
         c256,
         true,
         failed,
         MachSave::CommentFailed,
         {"record host", "comment 256"}},
    };
    for (const Case& c : cases) {
        std::vector<std::string> calls;
        VntMachData saved{};
        const MachWriters writers{[&](VntMachData* r) {
                                      saved = *r;
                                      calls.push_back("record " + std::string(r->HostName));
                                      return c.recordOk;
                                  },
                                  [&](const std::string& text) {
                                      calls.push_back("comment " + std::to_string(text.size()));
                                      return c.commentResult;
                                  }};
        EXPECT_EQ(SaveMachine(c.entries, writers), c.expected) << c.what;
        EXPECT_EQ(calls, c.calls) << c.what;
        if (!calls.empty()) {
            EXPECT_STREQ(saved.OSName, "Debian GNU/Linux") << c.what;
            EXPECT_STREQ(saved.LicenseNo, "L-1") << c.what;
            EXPECT_STREQ(saved.OSVersion, "12") << c.what;
        }
    }
}

TEST(ChoiceList, AStoredNameTheListLacksIsAppendedLastAndCurrent) {
    const std::vector<std::string> offered = {"A", "B", "C"};
    EXPECT_EQ(MakeChoiceRows(offered, "B").current, 1);
    EXPECT_EQ(MakeChoiceRows(offered, "B").rows, offered);
    const ChoiceRows other = MakeChoiceRows(offered, "Plan 9");
    EXPECT_EQ(other.rows, (std::vector<std::string>{"A", "B", "C", "Plan 9"}));
    EXPECT_EQ(other.current, 3);
    EXPECT_EQ(MakeChoiceRows(offered, "").rows, offered);
    EXPECT_EQ(MakeChoiceRows(offered, "").current, 0);
    EXPECT_EQ(MakeChoiceRows({}, "X").rows, std::vector<std::string>{"X"});
}

VendEntries GoodVendor() {
    return {"Distributor", "Sales", "Seller", "03-1234-5678", "Support", "Engineer", "(03) 1234"};
}

TEST(VendorData, EachRuleGivesItsMessageInTheScreensOrder) {
    struct Case {
        const char* what;
        std::string VendEntries::*field;
        std::string text;
        const char* fault;
    };
    const Case cases[] = {
        {"distributor 50", &VendEntries::distributor, std::string(50, 'd'), nullptr},
        {"distributor 51", &VendEntries::distributor, std::string(51, 'd'),
         "IDS_ERROR_MSG_DISTRIBUTOR"},
        {"distributor empty", &VendEntries::distributor, "", "IDS_ERROR_MSG_DISTRIBUTOR"},
        {"distributor 25 kanji", &VendEntries::distributor, Kanji(25), nullptr},
        {"distributor 25 kanji + 1", &VendEntries::distributor, Kanji(25) + "x",
         "IDS_ERROR_MSG_DISTRIBUTOR"},
        {"sales dept 60", &VendEntries::salesDept, Kanji(30), nullptr},
        {"sales dept 61", &VendEntries::salesDept, Kanji(30) + "x", "IDS_ERROR_MSG_SELLERDEPT"},
        {"sales person 40", &VendEntries::salesPerson, Kanji(20), nullptr},
        {"sales person 41", &VendEntries::salesPerson, Kanji(20) + "x", "IDS_ERROR_MSG_SELLERNAME"},
        {"sales tel 30", &VendEntries::salesTel, std::string(30, '1'), nullptr},
        {"sales tel 31", &VendEntries::salesTel, std::string(31, '1'),
         "IDS_ERROR_MSG_SELLERTELNUM"},
        {"sales tel blank", &VendEntries::salesTel, "(03) 1234", "IDS_ERROR_MSG_BADSELLERTELNUM"},
        {"sales tel letter", &VendEntries::salesTel, "03x", "IDS_ERROR_MSG_BADSELLERTELNUM"},
        {"sales tel empty", &VendEntries::salesTel, "", nullptr},
        {"engineer dept 61", &VendEntries::engineerDept, std::string(61, 'e'),
         "IDS_ERROR_MSG_SEDEPT"},
        {"engineer 40", &VendEntries::engineer, std::string(40, 'e'), nullptr},
        {"engineer 41", &VendEntries::engineer, Kanji(20) + "x", "IDS_ERROR_MSG_SENAME"},
        {"engineer tel 31", &VendEntries::engineerTel, std::string(31, '1'),
         "IDS_ERROR_MSG_SETELNUM"},
        {"engineer tel blank", &VendEntries::engineerTel, "(03) 1234-5", nullptr},
        {"engineer tel letter", &VendEntries::engineerTel, "03 x", "IDS_ERROR_MSG_BADSETELNUM"},
        {"engineer tel empty", &VendEntries::engineerTel, "", nullptr},
    };
    for (const Case& c : cases) {
        VendEntries e = GoodVendor();
        e.*c.field = c.text;
        const char* fault = VendFault(e);
        EXPECT_STREQ(fault ? fault : "(none)", c.fault ? c.fault : "(none)") << c.what;
    }
    // The first rule in the screen's order wins.
    VendEntries e = GoodVendor();
    e.engineerTel = "x";
    e.salesPerson = std::string(41, 's');
    EXPECT_STREQ(VendFault(e), "IDS_ERROR_MSG_SELLERNAME");
    // Entries that pass come back whole from their record.
    const VendEntries whole = {std::string(50, 'd'), Kanji(30), Kanji(20), "1", "", "", ""};
    const VntVendData record = VendRecordFrom(whole);
    const VendEntries back = VendEntriesFrom(record);
    EXPECT_EQ(back.distributor, whole.distributor);
    EXPECT_EQ(back.salesDept, whole.salesDept);
    EXPECT_EQ(back.salesPerson, whole.salesPerson);
}

TEST(OptionData, RowsNameTheKindsAndRefusalsFollowTheLibrarysAnswer) {
    const std::vector<OptionKind> kinds = {{0, "Standard", "s"}, {1, "Extended", "e"}};
    EXPECT_EQ(HeldOptionRows({1, 0, 7}, kinds),
              (std::vector<std::string>{"Extended", "Standard", "(7)"}));
    using S = LibResult::Status;
    struct Case {
        LibResult result;
        const char* add;
        const char* del;
    };
    const Case cases[] = {
        {{S::Succeeded, VNT_OPT_DONE}, nullptr, nullptr},
        {{S::Succeeded, VNT_OPT_HELD}, "IDS_ERROR_MSG_ADDOPTION2", "IDS_ERROR_MSG_DELETE"},
        {{S::Succeeded, VNT_OPT_REFUSED}, "IDS_ERROR_MSG_ADD", "IDS_ERROR_MSG_DELETE"},
        {{S::Succeeded, 0}, "IDS_ERROR_MSG_ADD", "IDS_ERROR_MSG_DELETE"},
        {{}, "IDS_ERROR_MSG_ADD", "IDS_ERROR_MSG_DELETE"},
    };
    for (const Case& c : cases) {
        const char* add = AddOptionRefusal(c.result);
        const char* del = DeleteOptionRefusal(c.result);
        EXPECT_STREQ(add ? add : "(none)", c.add ? c.add : "(none)") << c.result.value;
        EXPECT_STREQ(del ? del : "(none)", c.del ? c.del : "(none)") << c.result.value;
    }
}

}  // namespace
