// rptset.dll over a real store: the remote report service's records and the lists its screens
// choose from, bound by name as the program binds them.
#include <cstdio>
#include <cstring>
#include <functional>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "frame/libraries.h"
#include "services_test_util.h"

namespace svctest {
namespace {

const std::string kService = "SOFTWARE\\Tavik\\VNTService";
const std::string kSetting = kService + "\\SETTING";
const std::string kList = kService + "\\LIST";

// EUC-JP: "Tokyo-to Chiyoda-ku", "Yamada Taro", "Aoba Shoji K.K." in kanji.
const std::string kAddressJ = "\xC5\xEC\xB5\xFE\xC5\xD4\xC0\xE9\xC2\xE5\xC5\xC4\xB6\xE8";
const std::string kPersonJ = "\xBB\xB3\xC5\xC4\xC2\xC0\xCF\xBA";
const std::string kCompanyJ = "\xC0\xC4\xCD\xD5\xBE\xA6\xBB\xF6\xB3\xF4\xBC\xB0\xB2\xF1\xBC\xD2";

template <size_t N>
void Put(char (&field)[N], const std::string& text) {
    ASSERT_LT(text.size(), N);
    // Cleared whole, so that records compare byte for byte after a round trip.
    std::memset(field, 0, N);
    std::memcpy(field, text.c_str(), text.size());
}

class VntSettingTest : public ServicesTest {
  protected:
    void SetUp() override {
        ServicesTest::SetUp();
        ASSERT_TRUE(LoadRptsetDLL());
    }
    template <class Fn>
    Fn* Bind(const char* name) {
        Fn* fn = BindRptset<Fn>(hLibRPTSET, name);
        EXPECT_NE(fn, nullptr) << name;
        return fn;
    }

    // Every value of a key as stored: name -> type and bytes.
    std::map<std::string, std::string> Values(const std::string& path) {
        std::map<std::string, std::string> values;
        HKEY key = nullptr;
        if (RegOpenKeyEx(HKEY_LOCAL_MACHINE, path.c_str(), 0, KEY_READ, &key) != ERROR_SUCCESS)
            return values;
        for (DWORD i = 0;; ++i) {
            char name[256];
            DWORD nameSize = sizeof name;
            DWORD type = 0;
            BYTE data[1024];
            DWORD dataSize = sizeof data;
            if (RegEnumValue(key, i, name, &nameSize, nullptr, &type, data, &dataSize) !=
                ERROR_SUCCESS) {
                break;
            }
            values[name] =
                std::to_string(type) + ":" + std::string(reinterpret_cast<char*>(data), dataSize);
        }
        RegCloseKey(key);
        return values;
    }
    std::string Stored(const std::string& path, const char* name) { return Values(path)[name]; }
    static std::string Sz(const std::string& text) { return "1:" + text + std::string(1, '\0'); }

    // Writes a list as numbered values "000".."count-1", named name(i).
    void WriteList(const std::string& key, int count, const std::string& prefix) {
        // One transaction: hundreds of separately committed writes would be slow.
        ASSERT_EQ(ZolRegBeginTransaction(), ERROR_SUCCESS);
        for (int i = 0; i < count; ++i) {
            char value[16];
            std::snprintf(value, sizeof value, "%03d", i);
            SetText(kList + "\\" + key, value, prefix + std::to_string(i));
        }
        ASSERT_EQ(ZolRegCommitTransaction(), ERROR_SUCCESS);
    }

    // A customer record that every check accepts, every field at its longest.
    static VntUserData LongestUser() {
        VntUserData u{};
        u.Kind = 1;
        Put(u.CustomerNameA, std::string(50, 'N'));
        Put(u.CustomerNameJ, std::string(80, 'J'));
        Put(u.Department, std::string(60, 'D'));
        Put(u.PostCode, "1000001");
        Put(u.AddressA, std::string(50, 'A'));
        Put(u.AddressJ, std::string(80, 'B'));
        Put(u.AddressDetail, std::string(127, 'C'));
        Put(u.Telephone, std::string(30, '9'));
        Put(u.Mail, std::string(69, 'm') + "@example.jp");
        Put(u.PersonA, std::string(20, 'P'));
        Put(u.PersonJ, std::string(30, 'Q'));
        return u;
    }
    static VntMachData LongestMach() {
        VntMachData m{};
        Put(m.HostName, std::string(40, 'h'));
        Put(m.Manufacturer, std::string(16, 'M'));
        Put(m.LicenseNo, std::string(16, 'L'));
        Put(m.OSVersion, std::string(32, 'v'));
        Put(m.OSName, std::string(30, 'o'));
        Put(m.ProductName, std::string(40, 'p'));
        return m;
    }
    static VntVendData LongestVend() {
        VntVendData v{};
        Put(v.Distributor, std::string(50, 'd'));
        Put(v.SalesDept, std::string(60, 's'));
        Put(v.SalesPerson, std::string(40, 'p'));
        Put(v.SalesTel, std::string(30, '1'));
        Put(v.EngineerDept, std::string(60, 'e'));
        Put(v.Engineer, std::string(40, 'g'));
        Put(v.EngineerTel, std::string(30, '2'));
        return v;
    }
};

TEST_F(VntSettingTest, RecordsRoundTripThroughTheirValuesKeepingEucJpBytes) {
    auto* setUser = Bind<SetVntUserSetting_fn>("SetVntUserSetting");
    auto* getUser = Bind<GetVntUserSetting_fn>("GetVntUserSetting");
    auto* setMach = Bind<SetVntMachSetting_fn>("SetVntMachSetting");
    auto* getMach = Bind<GetVntMachSetting_fn>("GetVntMachSetting");
    auto* setVend = Bind<SetVntVendSetting_fn>("SetVntVendSetting");
    auto* getVend = Bind<GetVntVendSetting_fn>("GetVntVendSetting");
    auto* setOpt = Bind<SetVntOptSetting_fn>("SetVntOptSetting");
    auto* getOpt = Bind<GetVntOptSetting_fn>("GetVntOptSetting");
    auto* getSetup = Bind<GetVntSetting_fn>("GetVntSetting");
    ASSERT_TRUE(setUser && getUser && setMach && getMach && setVend && getVend && setOpt &&
                getOpt && getSetup);

    // Customer: the user code comes from the key floppy and is never written.
    SetText(kSetting, "USERCODE", "U-0042");
    VntUserData user = LongestUser();
    user.Kind = 0;
    Put(user.CustomerNameJ, kCompanyJ);
    Put(user.AddressJ, kAddressJ);
    Put(user.PersonJ, kPersonJ);
    Put(user.UserCode, "forged");
    ASSERT_EQ(setUser(&user), 1) << Trace();
    auto userBack = std::make_unique<VntUserData>();
    std::memset(userBack.get(), 0x5a, sizeof *userBack);
    ASSERT_EQ(getUser(userBack.get()), 1);
    Put(user.UserCode, "U-0042");
    EXPECT_EQ(std::memcmp(userBack.get(), &user, sizeof user), 0);
    EXPECT_EQ(Stored(kSetting, "KAISHAKBN"), std::string("4:\0\0\0\0", 6));
    EXPECT_EQ(Stored(kSetting, "ADRSNMN"), Sz(kAddressJ));
    EXPECT_EQ(Stored(kSetting, "USERCODE"), Sz("U-0042"));

    // Machine: each field lands in its own value.
    VntMachData mach{};
    Put(mach.HostName, "web01.example.jp");
    Put(mach.Manufacturer, "Hoshino");
    Put(mach.LicenseNo, "LC-778812");
    Put(mach.OSVersion, "12.5");
    Put(mach.OSName, "Debian GNU/Linux");
    Put(mach.ProductName, kCompanyJ);
    ASSERT_EQ(setMach(&mach), 1) << Trace();
    VntMachData machBack;
    std::memset(&machBack, 0x5a, sizeof machBack);
    ASSERT_EQ(getMach(&machBack), 1);
    EXPECT_EQ(std::memcmp(&machBack, &mach, sizeof mach), 0);
    const std::vector<std::pair<const char*, std::string>> machValues = {
        {"SYSNMN", "web01.example.jp"}, {"SOCHICD", "Hoshino"},
        {"GUARANTEE", "LC-778812"},     {"OSREV", "12.5"},
        {"OSNMA", "Debian GNU/Linux"},  {"SYSGOKI", kCompanyJ}};
    for (const auto& [value, text] : machValues)
        EXPECT_EQ(Stored(kSetting, value), Sz(text)) << value;

    // Vendor, read without the distributor list: the count is left alone.
    VntVendData vend = LongestVend();
    Put(vend.Distributor, kCompanyJ);
    Put(vend.EngineerTel, "03 (1234) 5678");
    ASSERT_EQ(setVend(&vend), 1) << Trace();
    VntVendData vendBack;
    std::memset(&vendBack, 0x5a, sizeof vendBack);
    int count = -7;
    ASSERT_EQ(getVend(&vendBack, nullptr, &count), 1);
    EXPECT_EQ(std::memcmp(&vendBack, &vend, sizeof vend), 0);
    EXPECT_EQ(count, -7);
    EXPECT_EQ(Stored(kSetting, "SYSSHOPNMN"), Sz(kCompanyJ));

    // Option: the code is stored, the name comes from the kind list.
    WriteList("OPTION", 3, "Kind ");
    VntOptData opt{2, "ignored"};
    ASSERT_EQ(setOpt(&opt), 1) << Trace();
    VntOptData optBack{};
    ASSERT_EQ(getOpt(&optBack), 1);
    EXPECT_EQ(optBack.OptionCode, 2u);
    EXPECT_STREQ(optBack.OptionName, "Kind 2");
    EXPECT_EQ(Stored(kSetting, "OPTCDN"), std::string("4:\2\0\0\0", 6));

    // Set-up data, written by the key floppy, read from SETUP and the service key.
    SetText(kService + "\\SETUP", "MAILADRS", "centre@example.jp");
    SetText(kService + "\\SETUP", "URL2", "https://" + std::string(240, 'u'));
    SetDword(kService + "\\SETUP", "SETTING", 3);
    SetDword(kService, "KEYFDTYPE", 2);
    SetDword(kService, "InstVantrelKeyFD", 1);
    auto setup = std::make_unique<VntSetupData>();
    std::memset(setup.get(), 0x5a, sizeof *setup);
    ASSERT_EQ(getSetup(setup.get()), 1);
    EXPECT_EQ(std::string(setup->Version) + "|" + setup->MailAddress + "|" + setup->PhoneNo,
              "3.51J|centre@example.jp|");
    EXPECT_EQ(std::string(setup->URL2), "https://" + std::string(240, 'u'));
    EXPECT_EQ(std::vector<uint32_t>(
                  {setup->Setting, setup->SavedAddressSet, setup->KeyFDType, setup->KeyFDRead}),
              std::vector<uint32_t>({3, 0, 2, 1}));
}

TEST_F(VntSettingTest, MissingWrongTypeAndOverlongValuesReadAsDefaultsOrCut) {
    auto* getUser = Bind<GetVntUserSetting_fn>("GetVntUserSetting");
    auto* getMach = Bind<GetVntMachSetting_fn>("GetVntMachSetting");
    auto* getVend = Bind<GetVntVendSetting_fn>("GetVntVendSetting");
    auto* getOpt = Bind<GetVntOptSetting_fn>("GetVntOptSetting");
    auto* getSetup = Bind<GetVntSetting_fn>("GetVntSetting");
    auto* osList = Bind<GetVntMachListData_fn>("GetVntMachListData");
    ASSERT_TRUE(getUser && getMach && getVend && getOpt && getSetup && osList);

    // No VNTService key at all: every record reads as its defaults.
    VntUserData user;
    std::memset(&user, 0x5a, sizeof user);
    ASSERT_EQ(getUser(&user), 1) << Trace();
    VntUserData expectUser{};
    expectUser.Kind = 1;
    EXPECT_EQ(std::memcmp(&user, &expectUser, sizeof user), 0);
    VntMachData mach;
    std::memset(&mach, 0x5a, sizeof mach);
    ASSERT_EQ(getMach(&mach), 1);
    EXPECT_EQ(std::memcmp(&mach, std::make_unique<VntMachData>().get(), sizeof mach), 0);
    VntVendData vend;
    std::vector<char> buffer(VNT_TEXT_SIZE, 'x');
    char* vendors[1] = {buffer.data()};
    int count = -1;
    ASSERT_EQ(getVend(&vend, vendors, &count), 1);
    EXPECT_EQ(count, 0);
    EXPECT_STREQ(vend.Distributor, "");
    VntOptData opt{9, "stale"};
    ASSERT_EQ(getOpt(&opt), 1);
    EXPECT_EQ(opt.OptionCode, 0u);
    EXPECT_STREQ(opt.OptionName, "");
    VntSetupData setup;
    std::memset(&setup, 0x5a, sizeof setup);
    ASSERT_EQ(getSetup(&setup), 1);
    EXPECT_STREQ(setup.Version, "3.51J");
    EXPECT_EQ(setup.KeyFDType + setup.KeyFDRead + setup.Setting, 0u);
    count = -1;
    ASSERT_EQ(osList(vendors, &count), 1);
    EXPECT_EQ(count, 0);

    // Values of another type read as defaults; a kind that is neither 0 nor 1 as company; an
    // overlong text is cut without splitting a two-byte character; an unknown option code keeps
    // its number with no name.
    SetDword(kSetting, "TOKUINMA", 5);
    ASSERT_EQ(SetRaw(kSetting, "KAISHAKBN", REG_SZ, std::string("0", 2)), 0);
    std::string longJ = "a";
    while (longJ.size() < 200)
        longJ += kPersonJ;
    SetText(kSetting, "ADRSNMN", longJ);
    SetDword(kSetting, "OPTCDN", 7);
    ASSERT_EQ(getUser(&user), 1);
    EXPECT_EQ(user.Kind, 1);
    EXPECT_STREQ(user.CustomerNameA, "");
    EXPECT_EQ(std::string(user.AddressJ), longJ.substr(0, 127));  // 'a' + 63 kanji
    SetDword(kSetting, "KAISHAKBN", 4);
    ASSERT_EQ(getUser(&user), 1);
    EXPECT_EQ(user.Kind, 1);
    ASSERT_EQ(getOpt(&opt), 1);
    EXPECT_EQ(opt.OptionCode, 7u);
    EXPECT_STREQ(opt.OptionName, "");
    SetText(kSetting, "ADRSNMN", longJ.substr(1));
    ASSERT_EQ(getUser(&user), 1);
    EXPECT_EQ(std::string(user.AddressJ), longJ.substr(1, 126));  // 63 kanji, not 63.5
    EXPECT_GE(TraceCount("wrong type"), 2);
    EXPECT_GE(TraceCount("too long"), 2);
}

TEST_F(VntSettingTest, WritersRefuseBadRecordsAndLeaveTheStoreUnchanged) {
    auto* setUser = Bind<SetVntUserSetting_fn>("SetVntUserSetting");
    auto* setMach = Bind<SetVntMachSetting_fn>("SetVntMachSetting");
    auto* setVend = Bind<SetVntVendSetting_fn>("SetVntVendSetting");
    auto* setOpt = Bind<SetVntOptSetting_fn>("SetVntOptSetting");
    ASSERT_TRUE(setUser && setMach && setVend && setOpt);
    WriteList("OPTION", 3, "Kind ");
    VntUserData user = LongestUser();
    VntMachData mach = LongestMach();
    VntVendData vend = LongestVend();
    VntOptData opt{1, ""};
    ASSERT_EQ(setUser(&user), 1) << Trace();
    ASSERT_EQ(setMach(&mach), 1) << Trace();
    ASSERT_EQ(setVend(&vend), 1) << Trace();
    ASSERT_EQ(setOpt(&opt), 1) << Trace();
    const auto before = Values(kSetting);

    // Each case changes a valid record in one way (and a field besides, so a write would show).
    struct Case {
        const char* what;
        std::function<int()> write;
    };
    auto changedUser = [&](auto change) {
        return [&, change] {
            VntUserData u = LongestUser();
            Put(u.CustomerNameA, "changed");
            change(u);
            return setUser(&u);
        };
    };
    auto changedMach = [&](auto change) {
        return [&, change] {
            VntMachData m = LongestMach();
            Put(m.HostName, "changed");
            change(m);
            return setMach(&m);
        };
    };
    auto changedVend = [&](auto change) {
        return [&, change] {
            VntVendData v = LongestVend();
            Put(v.Distributor, "changed");
            change(v);
            return setVend(&v);
        };
    };
    const Case cases[] = {
        {"kind 2", changedUser([](VntUserData& u) { u.Kind = 2; })},
        {"kind -1", changedUser([](VntUserData& u) { u.Kind = -1; })},
        {"customer name 51",
         changedUser([](VntUserData& u) { Put(u.CustomerNameA, std::string(51, 'n')); })},
        {"Japanese name 81",
         changedUser([](VntUserData& u) { Put(u.CustomerNameJ, std::string(81, 'j')); })},
        {"post code 8", changedUser([](VntUserData& u) { Put(u.PostCode, "12345678"); })},
        {"person 21", changedUser([](VntUserData& u) { Put(u.PersonA, std::string(21, 'p')); })},
        {"address detail unterminated",
         changedUser([](VntUserData& u) { std::memset(u.AddressDetail, 'c', VNT_TEXT_SIZE); })},
        {"host name 41",
         changedMach([](VntMachData& m) { Put(m.HostName, std::string(41, 'h')); })},
        {"OS name 31", changedMach([](VntMachData& m) { Put(m.OSName, std::string(31, 'o')); })},
        {"product unterminated",
         changedMach([](VntMachData& m) { std::memset(m.ProductName, 'p', VNT_TEXT_SIZE); })},
        {"distributor 51",
         changedVend([](VntVendData& v) { Put(v.Distributor, std::string(51, 'd')); })},
        {"engineer's telephone 31",
         changedVend([](VntVendData& v) { Put(v.EngineerTel, std::string(31, '3')); })},
        {"option code past the list",
         [&] {
             VntOptData o{3, ""};
             return setOpt(&o);
         }},
        {"null records",
         [&] { return setUser(nullptr) + setMach(nullptr) + setVend(nullptr) + setOpt(nullptr); }},
    };
    for (const Case& c : cases) {
        EXPECT_EQ(c.write(), 0) << c.what;
        EXPECT_EQ(Values(kSetting), before) << c.what;
    }

    // With no option kind list, no code can be stored.
    ASSERT_EQ(RegDeleteKey(HKEY_LOCAL_MACHINE, (kList + "\\OPTION").c_str()), ERROR_SUCCESS);
    VntOptData zero{0, ""};
    EXPECT_EQ(setOpt(&zero), 0);
    EXPECT_EQ(Values(kSetting), before);
}

TEST_F(VntSettingTest, ListsAreFilledInOrderAndCappedAtTheirMaxima) {
    auto* osList = Bind<GetVntMachListData_fn>("GetVntMachListData");
    auto* optList = Bind<GetVntOptKindList_fn>("GetVntOptKindList");
    auto* getVend = Bind<GetVntVendSetting_fn>("GetVntVendSetting");
    ASSERT_TRUE(osList && optList && getVend);
    VntVendData vend{};
    const struct {
        const char* key;
        int max;
        std::function<int(char**, int*)> get;
    } lists[] = {
        {"OS", VNT_OS_LIST_MAX, osList},
        {"OPTION", VNT_OPTION_LIST_MAX, optList},
        {"VENDOR", VNT_VENDOR_LIST_MAX,
         [&](char** names, int* count) { return getVend(&vend, names, count); }},
    };
    for (const auto& list : lists) {
        // One entry more than the caller has room for; the buffer after the last is a guard.
        WriteList(list.key, list.max + 1, std::string(list.key) + " ");
        std::vector<std::vector<char>> buffers(list.max + 1, std::vector<char>(VNT_TEXT_SIZE, '#'));
        std::vector<char*> names;
        for (auto& b : buffers)
            names.push_back(b.data());
        int count = -1;
        ASSERT_EQ(list.get(names.data(), &count), 1) << list.key;
        ASSERT_EQ(count, list.max) << list.key;
        EXPECT_STREQ(names[0], (std::string(list.key) + " 0").c_str());
        EXPECT_STREQ(names[list.max - 1],
                     (std::string(list.key) + " " + std::to_string(list.max - 1)).c_str());
        EXPECT_EQ(buffers[list.max][0], '#') << list.key;

        // A missing number ends the list; an entry of another type too.
        const std::string key = kList + "\\" + list.key;
        HKEY handle = nullptr;
        ASSERT_EQ(RegOpenKeyEx(HKEY_LOCAL_MACHINE, key.c_str(), 0, KEY_ALL_ACCESS, &handle), 0);
        ASSERT_EQ(RegDeleteValue(handle, "005"), ERROR_SUCCESS);
        RegCloseKey(handle);
        SetDword(key, "003", 1);
        ASSERT_EQ(list.get(names.data(), &count), 1) << list.key;
        EXPECT_EQ(count, 3) << list.key;

        // A buffer the list needs is missing: refused, nothing written.
        names[2] = nullptr;
        buffers[0].assign(VNT_TEXT_SIZE, '#');
        count = -1;
        EXPECT_EQ(list.get(names.data(), &count), 0) << list.key;
        EXPECT_EQ(count, -1);
        EXPECT_EQ(buffers[0][0], '#') << list.key;
    }
    EXPECT_EQ(osList(nullptr, nullptr), 0);
}

TEST_F(VntSettingTest, SeededListsAreReadAndTheirNamesCanBeStored) {
    const auto import = zoltest::run({root().bin("zolreg").string(), "import",
                                      (root().path() / "data" / "default.reg").string()},
                                     root().env());
    ASSERT_EQ(import.status, 0) << import.err;
    auto* osList = Bind<GetVntMachListData_fn>("GetVntMachListData");
    auto* optList = Bind<GetVntOptKindList_fn>("GetVntOptKindList");
    auto* getVend = Bind<GetVntVendSetting_fn>("GetVntVendSetting");
    auto* setVend = Bind<SetVntVendSetting_fn>("SetVntVendSetting");
    auto* setMach = Bind<SetVntMachSetting_fn>("SetVntMachSetting");
    auto* getOpt = Bind<GetVntOptSetting_fn>("GetVntOptSetting");
    ASSERT_TRUE(osList && optList && getVend && setVend && setMach && getOpt);

    std::vector<std::vector<char>> buffers(VNT_VENDOR_LIST_MAX, std::vector<char>(VNT_TEXT_SIZE));
    std::vector<char*> names;
    for (auto& b : buffers)
        names.push_back(b.data());
    int count = 0;

    // Every distributor and operating system offered can be saved as chosen.
    VntVendData vend{};
    ASSERT_EQ(getVend(&vend, names.data(), &count), 1);
    EXPECT_GE(count, 12);
    EXPECT_EQ(static_cast<unsigned char>(names[0][0]) >= 0xA1, true);  // Japanese first
    for (int i = 0; i < count; ++i) {
        Put(vend.Distributor, names[i]);
        EXPECT_EQ(setVend(&vend), 1) << names[i];
    }
    ASSERT_EQ(osList(names.data(), &count), 1);
    EXPECT_GE(count, 4);
    VntMachData mach = LongestMach();
    for (int i = 0; i < count; ++i) {
        Put(mach.OSName, names[i]);
        EXPECT_EQ(setMach(&mach), 1) << names[i];
    }

    // A new installation's option code names the first kind.
    ASSERT_EQ(optList(names.data(), &count), 1);
    EXPECT_EQ(count, 3);
    VntOptData opt{};
    ASSERT_EQ(getOpt(&opt), 1);
    EXPECT_STREQ(opt.OptionName, names[0]);
    EXPECT_STREQ(opt.OptionName, "Standard");
}

}  // namespace
}  // namespace svctest
