// rptset.dll over a real store: the options held as a list (GetVntOptList, AddVntOption,
// DelVntOption) beside the single-value option record, stores written before the list existed,
// and the descriptions of the option kinds.
#include <cstdio>
#include <string>
#include <vector>

#include "frame/libraries.h"
#include "regpaths.h"
#include "services_test_util.h"

namespace svctest {
namespace {

const std::string kSetting = ZOL_KEY_VNT_SETTING;

class VntOptionTest : public ServicesTest {
  protected:
    void SetUp() override {
        ServicesTest::SetUp();
        ASSERT_TRUE(LoadRptsetDLL());
        Bind(getList, "GetVntOptList");
        Bind(add, "AddVntOption");
        Bind(del, "DelVntOption");
        Bind(getOpt, "GetVntOptSetting");
        Bind(setOpt, "SetVntOptSetting");
        Bind(descs, "GetVntOptKindDesc");
        // Kinds 0..4.
        for (int i = 0; i < 5; ++i)
            SetText(ZOL_KEY_VNT_LIST_OPTION, Number(i).c_str(), "Kind " + std::to_string(i));
    }
    static std::string Number(int i) {
        char name[16];
        std::snprintf(name, sizeof name, "%03d", i);
        return name;
    }
    // The options held as "0,2", or "failed".
    std::string Held() {
        std::vector<uint32_t> codes(VNT_OPTION_LIST_MAX, 0xdead);
        int count = -1;
        if (getList(codes.data(), &count) != 1)
            return "failed";
        std::string text;
        for (int i = 0; i < count; ++i)
            text += (i ? "," : "") + std::to_string(codes[static_cast<size_t>(i)]);
        return text;
    }
    std::string Stored(const char* name) {
        HKEY key = nullptr;
        if (RegOpenKeyEx(HKEY_LOCAL_MACHINE, kSetting.c_str(), 0, KEY_READ, &key) != 0)
            return "(no key)";
        char data[512] = {};
        DWORD type = 0, size = sizeof data;
        const LONG rc =
            RegQueryValueEx(key, name, nullptr, &type, reinterpret_cast<BYTE*>(data), &size);
        RegCloseKey(key);
        if (rc != ERROR_SUCCESS)
            return "(missing)";
        if (type == REG_DWORD)
            return std::to_string(*reinterpret_cast<DWORD*>(data));
        return data;
    }

    GetVntOptList_fn* getList = nullptr;
    AddVntOption_fn* add = nullptr;
    DelVntOption_fn* del = nullptr;
    GetVntOptSetting_fn* getOpt = nullptr;
    SetVntOptSetting_fn* setOpt = nullptr;
    GetVntOptKindDesc_fn* descs = nullptr;
};

TEST_F(VntOptionTest, AStoreOfTheSingleValueReadsAsThatOneOption) {
    // Nothing stored: the default option 0. A store of OPTCDN alone: that option.
    EXPECT_EQ(Held(), "0");
    SetDword(kSetting, "OPTCDN", 3);
    EXPECT_EQ(Held(), "3");
    // Adding to it keeps the old option first, and the single-value reader still sees it.
    EXPECT_EQ(add(1), VNT_OPT_DONE) << Trace();
    EXPECT_EQ(Held(), "3,1");
    EXPECT_EQ(Stored("OPTCDN") + "|" + Stored("OPTCDNLIST"), "3|3,1");
    VntOptData opt{};
    ASSERT_EQ(getOpt(&opt), 1);
    EXPECT_EQ(opt.OptionCode, 3u);
    EXPECT_STREQ(opt.OptionName, "Kind 3");

    // OPTCDN written alone afterwards (as the key floppy's initial values do) wins over a list
    // that does not start with it; so does a list that is not a list of codes.
    SetDword(kSetting, "OPTCDN", 0);
    EXPECT_EQ(Held(), "0");
    for (const char* bad : {"", "0,", "0,,1", " 0,1", "0;1", "-0,1", "0,99999999999"}) {
        SetText(kSetting, "OPTCDNLIST", bad);
        EXPECT_EQ(Held(), "0") << bad;
    }
    ASSERT_EQ(SetRaw(kSetting, "OPTCDNLIST", REG_DWORD, std::string(4, '\0')), 0);
    EXPECT_EQ(Held(), "0");
    SetText(kSetting, "OPTCDNLIST", "0,4,2");
    EXPECT_EQ(Held(), "0,4,2");

    // Setting the single option ends the list.
    opt.OptionCode = 2;
    ASSERT_EQ(setOpt(&opt), 1);
    EXPECT_EQ(Held(), "2");
    EXPECT_EQ(Stored("OPTCDNLIST"), "(missing)");
}

TEST_F(VntOptionTest, AddAndDeleteRefuseWhatTheListCannotTakeAndWriteNothingThen) {
    struct Step {
        const char* what;
        bool adding;
        uint32_t code;
        int result;
        const char* held;
    };
    const Step steps[] = {
        {"add a kind", true, 2, VNT_OPT_DONE, "0,2"},
        {"add the last kind", true, 4, VNT_OPT_DONE, "0,2,4"},
        {"add one held", true, 2, VNT_OPT_HELD, "0,2,4"},
        {"add the first, held", true, 0, VNT_OPT_HELD, "0,2,4"},
        {"add past the kind list", true, 5, VNT_OPT_REFUSED, "0,2,4"},
        {"delete the first", false, 0, VNT_OPT_DONE, "2,4"},
        {"delete one not held", false, 0, VNT_OPT_HELD, "2,4"},
        {"delete", false, 4, VNT_OPT_DONE, "2"},
        {"delete the only one", false, 2, VNT_OPT_REFUSED, "2"},
        {"add again", true, 0, VNT_OPT_DONE, "2,0"},
    };
    for (const Step& s : steps) {
        EXPECT_EQ(s.adding ? add(s.code) : del(s.code), s.result) << s.what << "\n" << Trace();
        EXPECT_EQ(Held(), s.held) << s.what;
    }
    EXPECT_EQ(Stored("OPTCDN"), "2");

    // A held code the kind list no longer names stays held and can be deleted.
    SetText(kSetting, "OPTCDNLIST", "2,7");
    EXPECT_EQ(Held(), "2,7");
    EXPECT_EQ(add(7), VNT_OPT_HELD);
    EXPECT_EQ(del(7), VNT_OPT_DONE);
    EXPECT_EQ(Held(), "2");

    // A full list refuses one more.
    std::string full = "0";
    for (int i = 1; i < VNT_OPTION_LIST_MAX; ++i)
        full += "," + std::to_string(100 + i);
    SetDword(kSetting, "OPTCDN", 0);
    SetText(kSetting, "OPTCDNLIST", full);
    EXPECT_EQ(add(1), VNT_OPT_REFUSED);
    EXPECT_EQ(Stored("OPTCDNLIST"), full);
}

TEST_F(VntOptionTest, ReadingAKeyFloppyStartsTheOptionsAnew) {
    ASSERT_EQ(add(3), VNT_OPT_DONE);
    ASSERT_EQ(Held(), "0,3");
    auto read = BindFromHandle<GetOpenMsgfromFD_fn>(hLibRPTSET, "GetOpenMsgfromFD");
    ASSERT_NE(read, nullptr);
    const std::string floppy = (root().path() / "fd").string();
    const zoltest::RunResult made =
        zoltest::run({root().bin("zolkeyfd").string(), "make", floppy, "--type", "1", "--mail",
                      "centre@example.com", "--usercode", "U-1"},
                     root().env());
    ASSERT_EQ(made.status, 0) << made.out << made.err;
    ASSERT_EQ(read(floppy.c_str()), 1) << Trace();
    EXPECT_EQ(Held(), "0");
    EXPECT_EQ(Stored("OPTCDNLIST"), "(missing)");
}

TEST_F(VntOptionTest, ClearingTheSetUpEndsTheOptionList) {
    SetDword(kSetting, "OPTCDN", 0);
    ASSERT_EQ(add(3), VNT_OPT_DONE);
    ASSERT_EQ(Held(), "0,3");
    ASSERT_NO_FATAL_FAILURE(ClearServiceSetUp());
    // OPTCDN back to 0 alone: a list "0,..." left behind would still read as held.
    EXPECT_EQ(Held(), "0");
    EXPECT_EQ(Stored("OPTCDNLIST"), "(missing)");
}

TEST_F(VntOptionTest, KindDescriptionsAreNumberedAsTheKinds) {
    SetText(ZOL_KEY_VNT_LIST_OPTION_DESC, "000", "First kind");
    SetText(ZOL_KEY_VNT_LIST_OPTION_DESC, "001", "Second kind");
    std::vector<std::vector<char>> bytes(VNT_OPTION_LIST_MAX, std::vector<char>(VNT_TEXT_SIZE));
    std::vector<char*> texts;
    for (auto& b : bytes)
        texts.push_back(b.data());
    int count = -1;
    ASSERT_EQ(descs(texts.data(), &count), 1);
    ASSERT_EQ(count, 2);
    EXPECT_STREQ(texts[1], "Second kind");
}

}  // namespace
}  // namespace svctest
