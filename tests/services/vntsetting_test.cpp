// rptset.dll over a real store: the remote report service's records and the lists its screens
// choose from, bound by name as the program binds them.
#include <cstdio>
#include <cstring>
#include <functional>
#include <map>
#include <string>
#include <vector>

#include "frame/libraries.h"
#include "regpaths.h"
#include "services_test_util.h"

namespace svctest {
namespace {

const std::string kService = ZOL_KEY_VNTSERVICE;
const std::string kSetting = kService + "\\SETTING";
const std::string kList = kService + "\\LIST";
// EUC-JP kanji: an address, a person, a company.
const std::string kAddressJ = "\xC5\xEC\xB5\xFE\xC5\xD4\xC0\xE9\xC2\xE5\xC5\xC4\xB6\xE8";
const std::string kPersonJ = "\xBB\xB3\xC5\xC4\xC2\xC0\xCF\xBA";
const std::string kCompanyJ = "\xC0\xC4\xCD\xD5\xBE\xA6\xBB\xF6\xB3\xF4\xBC\xB0\xB2\xF1\xBC\xD2";

// Cleared whole first, so that records compare byte for byte after a round trip.
template <size_t N>
void Put(char (&field)[N], const std::string& text) {
    ASSERT_LT(text.size(), N);
    std::memset(field, 0, N);
    std::memcpy(field, text.data(), text.size());
}
template <class R>
bool Same(const R& a, const R& b) {
    return std::memcmp(&a, &b, sizeof a) == 0;
}

// Buffers for a list call: n entries of VNT_TEXT_SIZE bytes filled with '#'.
struct ListBuffers {
    explicit ListBuffers(int n) : bytes(n, std::vector<char>(VNT_TEXT_SIZE, '#')) {
        for (auto& b : bytes)
            names.push_back(b.data());
    }
    std::vector<std::vector<char>> bytes;
    std::vector<char*> names;
};

class VntSettingTest : public ServicesTest {
  protected:
    void SetUp() override {
        ServicesTest::SetUp();
        ASSERT_TRUE(LoadRptsetDLL());
        Bind(getSetup, "GetVntSetting");
        Bind(getUser, "GetVntUserSetting");
        Bind(setUser, "SetVntUserSetting");
        Bind(getMach, "GetVntMachSetting");
        Bind(setMach, "SetVntMachSetting");
        Bind(osList, "GetVntMachListData");
        Bind(getVend, "GetVntVendSetting");
        Bind(setVend, "SetVntVendSetting");
        Bind(getOpt, "GetVntOptSetting");
        Bind(setOpt, "SetVntOptSetting");
        Bind(optList, "GetVntOptKindList");
    }
    GetVntSetting_fn* getSetup = nullptr;
    GetVntUserSetting_fn* getUser = nullptr;
    SetVntUserSetting_fn* setUser = nullptr;
    GetVntMachSetting_fn* getMach = nullptr;
    SetVntMachSetting_fn* setMach = nullptr;
    GetVntMachListData_fn* osList = nullptr;
    GetVntVendSetting_fn* getVend = nullptr;
    SetVntVendSetting_fn* setVend = nullptr;
    GetVntOptSetting_fn* getOpt = nullptr;
    SetVntOptSetting_fn* setOpt = nullptr;
    GetVntOptKindList_fn* optList = nullptr;

    // Every value of a key as stored: name -> type and bytes.
    std::map<std::string, std::string> Values(const std::string& path) {
        std::map<std::string, std::string> values;
        HKEY key = nullptr;
        if (RegOpenKeyEx(HKEY_LOCAL_MACHINE, path.c_str(), 0, KEY_READ, &key) != ERROR_SUCCESS)
            return values;
        char name[256];
        BYTE data[1024];
        DWORD nameSize = sizeof name, type = 0, dataSize = sizeof data;
        for (DWORD i = 0; RegEnumValue(key, i, name, &nameSize, nullptr, &type, data, &dataSize) ==
                          ERROR_SUCCESS;
             ++i, nameSize = sizeof name, dataSize = sizeof data) {
            values[name] =
                std::to_string(type) + ":" + std::string(reinterpret_cast<char*>(data), dataSize);
        }
        RegCloseKey(key);
        return values;
    }
    static std::string Sz(const std::string& text) { return "1:" + text + std::string(1, '\0'); }

    // Writes list entries "000".."count-1" as prefix + number, in one transaction.
    void WriteList(const std::string& key, int count, const std::string& prefix) {
        ASSERT_EQ(ZolRegBeginTransaction(), ERROR_SUCCESS);
        for (int i = 0; i < count; ++i) {
            char value[16];
            std::snprintf(value, sizeof value, "%03d", i);
            SetText(kList + "\\" + key, value, prefix + std::to_string(i));
        }
        ASSERT_EQ(ZolRegCommitTransaction(), ERROR_SUCCESS);
    }

    // Records that every check accepts, each text field at its longest. The text fields are the
    // last fields of each record, one after the other.
    template <class R, size_t N>
    static R Longest(const size_t (&lengths)[N]) {
        R record{};
        char* field = reinterpret_cast<char*>(&record) + sizeof record - N * VNT_TEXT_SIZE;
        for (size_t i = 0; i < N; ++i, field += VNT_TEXT_SIZE)
            std::memset(field, static_cast<int>('a' + i), lengths[i]);
        return record;
    }
    static VntUserData LongestUser() {
        // The user code is last and never written: any text goes.
        return Longest<VntUserData>({50, 80, 60, 7, 50, 80, 127, 30, 80, 20, 30, 127});
    }
    static VntMachData LongestMach() { return Longest<VntMachData>({40, 16, 16, 32, 30, 40}); }
    static VntVendData LongestVend() { return Longest<VntVendData>({50, 60, 40, 30, 60, 40, 30}); }
};

TEST_F(VntSettingTest, RecordsRoundTripThroughTheirValuesKeepingEucJpBytes) {
    // Writes record, reads it back over a dirty record.
    auto roundTrip = [this](auto set, auto get, auto record) {
        decltype(record) back;
        std::memset(&back, 0x5a, sizeof back);
        EXPECT_EQ(set(&record), 1) << Trace();
        EXPECT_EQ(get(&back), 1);
        return back;
    };

    // Customer: the user code comes from the key floppy and is never written.
    SetText(kSetting, "USERCODE", "U-0042");
    VntUserData user = LongestUser();
    Put(user.CustomerNameJ, kCompanyJ);
    Put(user.AddressJ, kAddressJ);
    Put(user.PersonJ, kPersonJ);
    const VntUserData userBack = roundTrip(setUser, getUser, user);
    Put(user.UserCode, "U-0042");
    EXPECT_TRUE(Same(userBack, user));
    EXPECT_EQ(Values(kSetting)["ADRSNMN"], Sz(kAddressJ));

    // Machine: each field lands in its own value (field i holds the letter 'a' + i).
    VntMachData mach = LongestMach();
    EXPECT_TRUE(Same(roundTrip(setMach, getMach, mach), mach));
    const char* machValues[] = {"SYSNMN", "SOCHICD", "GUARANTEE", "OSREV", "OSNMA", "SYSGOKI"};
    for (int i = 0; i < 6; ++i)
        EXPECT_EQ(Values(kSetting)[machValues[i]].substr(0, 3), std::string("1:") + char('a' + i));

    // Vendor, read without the distributor list: the count is left alone.
    VntVendData vend = LongestVend();
    Put(vend.Distributor, kCompanyJ);
    Put(vend.EngineerTel, "03 (1234) 5678");
    int count = -7;
    auto getVendOnly = [&](VntVendData* r) { return getVend(r, nullptr, &count); };
    EXPECT_TRUE(Same(roundTrip(setVend, getVendOnly, vend), vend));
    EXPECT_EQ(count, -7);
    EXPECT_EQ(Values(kSetting)["SYSSHOPNMN"], Sz(kCompanyJ));

    // Option: the code is stored, the name comes from the kind list.
    WriteList("OPTION", 3, "Kind ");
    VntOptData opt{2, "ignored"}, optBack{};
    ASSERT_EQ(setOpt(&opt), 1) << Trace();
    ASSERT_EQ(getOpt(&optBack), 1);
    EXPECT_EQ(optBack.OptionCode, 2u);
    EXPECT_STREQ(optBack.OptionName, "Kind 2");

    // Set-up data, written by the key floppy, read from SETUP and the service key.
    SetText(kService + "\\SETUP", "MAILADRS", "centre@example.jp");
    SetText(kService + "\\SETUP", "URL2", "https://" + std::string(240, 'u'));
    SetDword(kService + "\\SETUP", "SETTING", 3);
    SetDword(kService, "KEYFDTYPE", 2);
    SetDword(kService, "InstVantrelKeyFD", 1);
    VntSetupData setup;
    std::memset(&setup, 0x5a, sizeof setup);
    ASSERT_EQ(getSetup(&setup), 1);
    EXPECT_EQ(std::string(setup.Version) + "|" + setup.MailAddress + "|" + setup.PhoneNo + "|" +
                  setup.URL2,
              "3.51J|centre@example.jp||https://" + std::string(240, 'u'));
    EXPECT_EQ(std::vector<uint32_t>(
                  {setup.Setting, setup.SavedAddressSet, setup.KeyFDType, setup.KeyFDRead}),
              std::vector<uint32_t>({3, 0, 2, 1}));
}

TEST_F(VntSettingTest, MissingWrongTypeAndOverlongValuesReadAsDefaultsOrCut) {
    // No VNTService key at all: every record reads as its defaults.
    VntUserData user, expectUser{};
    expectUser.Kind = 1;
    VntMachData mach;
    VntVendData vend;
    VntOptData opt{9, "stale"};
    VntSetupData setup;
    auto dirty = [](auto& record) { std::memset(&record, 0x5a, sizeof record); };
    dirty(user), dirty(mach), dirty(vend), dirty(setup);
    ListBuffers names(1);
    int osCount = -1, vendCount = -1;
    ASSERT_EQ(getUser(&user) + getMach(&mach) + getVend(&vend, names.names.data(), &vendCount) +
                  getOpt(&opt) + getSetup(&setup) + osList(names.names.data(), &osCount),
              6)
        << Trace();
    EXPECT_TRUE(Same(user, expectUser));
    EXPECT_TRUE(Same(mach, VntMachData{}));
    EXPECT_TRUE(Same(vend, VntVendData{}));
    EXPECT_TRUE(Same(opt, VntOptData{}));
    EXPECT_EQ(std::string(setup.Version) + "|" + setup.MailAddress, "3.51J|");
    EXPECT_EQ(osCount + vendCount, 0);

    // Values of another type read as defaults, a kind that is neither 0 nor 1 as company, an
    // unknown option code keeps its number with no name, and an overlong text is cut without
    // splitting a two-byte character.
    SetDword(kSetting, "TOKUINMA", 5);
    ASSERT_EQ(SetRaw(kSetting, "KAISHAKBN", REG_SZ, std::string("0", 2)), 0);
    SetDword(kSetting, "OPTCDN", 7);
    std::string longJ = "a";
    while (longJ.size() < 200)
        longJ += kPersonJ;
    SetText(kSetting, "ADRSNMN", longJ);
    ASSERT_EQ(getUser(&user), 1);
    EXPECT_EQ(user.Kind, 1);
    EXPECT_STREQ(user.CustomerNameA, "");
    EXPECT_EQ(std::string(user.AddressJ), longJ.substr(0, 127));  // 'a' and 63 kanji
    ASSERT_EQ(getOpt(&opt), 1);
    EXPECT_EQ(opt.OptionCode, 7u);
    EXPECT_STREQ(opt.OptionName, "");
    SetDword(kSetting, "KAISHAKBN", 4);
    SetText(kSetting, "ADRSNMN", longJ.substr(1));
    ASSERT_EQ(getUser(&user), 1);
    EXPECT_EQ(user.Kind, 1);
    EXPECT_EQ(std::string(user.AddressJ), longJ.substr(1, 126));  // 63 kanji, not 63 and a half
    EXPECT_EQ(TraceCount("wrong type"), 3);                       // TOKUINMA twice, KAISHAKBN once
    EXPECT_EQ(TraceCount("too long"), 2);
}

TEST_F(VntSettingTest, WritersRefuseBadRecordsAndLeaveTheStoreUnchanged) {
    WriteList("OPTION", 3, "Kind ");
    VntUserData user = LongestUser();
    VntMachData mach = LongestMach();
    VntVendData vend = LongestVend();
    VntOptData opt{1, ""};
    ASSERT_EQ(setUser(&user) + setMach(&mach) + setVend(&vend) + setOpt(&opt), 4) << Trace();
    const auto before = Values(kSetting);

    // Each case breaks one rule of a valid record that also changes another field, so that a
    // write would show.
    Put(user.CustomerNameA, "changed");
    Put(mach.HostName, "changed");
    Put(vend.Distributor, "changed");
    auto broken = [](auto* set, auto record, auto change) -> std::function<int()> {
        return [=]() mutable {
            change(record);
            return set(&record);
        };
    };
    using U = VntUserData&;
    using M = VntMachData&;
    using V = VntVendData&;
    const std::pair<const char*, std::function<int()>> cases[] = {
        {"kind 2", broken(setUser, user, [](U u) { u.Kind = 2; })},
        {"name 51", broken(setUser, user, [](U u) { Put(u.CustomerNameA, std::string(51, 'n')); })},
        {"post code 8", broken(setUser, user, [](U u) { Put(u.PostCode, "12345678"); })},
        {"person 21", broken(setUser, user, [](U u) { Put(u.PersonA, std::string(21, 'p')); })},
        {"detail unterminated",
         broken(setUser, user, [](U u) { std::memset(u.AddressDetail, 'c', VNT_TEXT_SIZE); })},
        {"host 41", broken(setMach, mach, [](M m) { Put(m.HostName, std::string(41, 'h')); })},
        {"product unterminated",
         broken(setMach, mach, [](M m) { std::memset(m.ProductName, 'p', VNT_TEXT_SIZE); })},
        {"distributor 51",
         broken(setVend, vend, [](V v) { Put(v.Distributor, std::string(51, 'd')); })},
        {"option past the list",
         [&] {
             VntOptData o{3, ""};
             return setOpt(&o);
         }},
        {"null records",
         [&] { return setUser(nullptr) + setMach(nullptr) + setVend(nullptr) + setOpt(nullptr); }},
        {"no option list",
         [&] {
             RegDeleteKey(HKEY_LOCAL_MACHINE, (kList + "\\OPTION").c_str());
             VntOptData o{0, ""};
             return setOpt(&o);
         }},
    };
    for (const auto& [what, write] : cases) {
        EXPECT_EQ(write(), 0) << what;
        EXPECT_EQ(Values(kSetting), before) << what;
    }
}

TEST_F(VntSettingTest, ListsAreFilledInOrderAndCappedAtTheirMaxima) {
    VntVendData vend{};
    const struct {
        const char* key;
        int max;
        std::function<int(char**, int*)> get;
    } lists[] = {
        {"OS", VNT_OS_LIST_MAX, osList},
        {"OPTION", VNT_OPTION_LIST_MAX, optList},
        {"VENDOR", VNT_VENDOR_LIST_MAX, [&](char** n, int* c) { return getVend(&vend, n, c); }},
    };
    for (const auto& list : lists) {
        // One entry more than the caller has room for; the buffer after the last is a guard.
        const std::string key = kList + "\\" + list.key, prefix = std::string(list.key) + " ";
        WriteList(list.key, list.max + 1, prefix);
        ListBuffers buffers(list.max + 1);
        int count = -1;
        ASSERT_EQ(list.get(buffers.names.data(), &count), 1) << list.key;
        ASSERT_EQ(count, list.max) << list.key;
        EXPECT_EQ(prefix + "0", buffers.names[0]);
        EXPECT_EQ(prefix + std::to_string(list.max - 1), buffers.names[list.max - 1]);
        EXPECT_EQ(buffers.names[list.max][0], '#') << list.key;

        // A missing number ends the list; an entry of another type too.
        SetDword(key, "005", 1);
        ASSERT_EQ(list.get(buffers.names.data(), &count), 1) << list.key;
        EXPECT_EQ(count, 5) << list.key;
        HKEY handle = nullptr;
        ASSERT_EQ(RegOpenKeyEx(HKEY_LOCAL_MACHINE, key.c_str(), 0, KEY_ALL_ACCESS, &handle), 0);
        ASSERT_EQ(RegDeleteValue(handle, "003"), ERROR_SUCCESS);
        RegCloseKey(handle);
        ASSERT_EQ(list.get(buffers.names.data(), &count), 1) << list.key;
        EXPECT_EQ(count, 3) << list.key;

        // A buffer the list needs is missing: refused, nothing written.
        ListBuffers holed(3);
        holed.names[2] = nullptr;
        count = -1;
        EXPECT_EQ(list.get(holed.names.data(), &count), 0) << list.key;
        EXPECT_EQ(count, -1);
        EXPECT_EQ(holed.names[0][0], '#') << list.key;
    }
}

TEST_F(VntSettingTest, SeededListsAreReadAndEveryNameOfferedCanBeStored) {
    const auto import = zoltest::run({root().bin("zolreg").string(), "import",
                                      (root().path() / "data" / "default.reg").string()},
                                     root().env());
    ASSERT_EQ(import.status, 0) << import.err;
    ListBuffers buffers(VNT_VENDOR_LIST_MAX);
    int count = 0;
    VntVendData vend{};
    ASSERT_EQ(getVend(&vend, buffers.names.data(), &count), 1);
    EXPECT_GE(count, 12);
    EXPECT_GE(static_cast<unsigned char>(buffers.names[0][0]), 0xA1);  // EUC-JP first
    for (int i = 0; i < count; ++i) {
        Put(vend.Distributor, buffers.names[i]);
        EXPECT_EQ(setVend(&vend), 1) << buffers.names[i];
    }
    ASSERT_EQ(osList(buffers.names.data(), &count), 1);
    EXPECT_GE(count, 4);
    VntMachData mach = LongestMach();
    for (int i = 0; i < count; ++i) {
        Put(mach.OSName, buffers.names[i]);
        EXPECT_EQ(setMach(&mach), 1) << buffers.names[i];
    }
    // A new installation's option code names the first kind.
    VntOptData opt{};
    ASSERT_EQ(optList(buffers.names.data(), &count), 1);
    ASSERT_EQ(getOpt(&opt), 1);
    EXPECT_EQ(count, 3);
    EXPECT_STREQ(opt.OptionName, "Standard");
}

}  // namespace
}  // namespace svctest
