// rptset.dll: the remote report service's records: set-up data (SETUP), and the customer,
// machine, vendor and option data under SETTING. The value of each field, the defaults and the
// writers' limits are in docs/registry.md ("Remote report service records and lists").
//
// Readers fill a fresh record with the defaults, read every value over it and copy it to the
// caller only when the store could be read: a failed read leaves the caller's record alone.
// Writers check the whole record first and write it in one transaction.
#include <zolwin.h>

#include <cstddef>
#include <cstring>
#include <memory>
#include <span>
#include <string>
#include <type_traits>
#include <vector>

#include "regvalue.h"
#include "rptset_api.h"
#include "vntstore.h"

namespace {

using rptset::Key;
using rptset::vnt::ReadKey;
using zolwin::Transaction;

// One 128-byte text field of a record and the SETTING value that holds it.
template <class R>
struct TextValue {
    const char* value;
    char (R::*field)[VNT_TEXT_SIZE];
    // Longest text a writer stores, in bytes: the limit of the field's screen, so that what the
    // service sends never exceeds it even when a caller skips a check. 0: never written.
    std::size_t maxBytes;
};

// A record's field table; not deduced, so that the record argument alone fixes R.
template <class R>
using Fields = std::type_identity_t<std::span<const TextValue<R>>>;

constexpr std::size_t kWholeField = VNT_TEXT_SIZE - 1;

constexpr TextValue<VntUserData> kUserTexts[] = {
    {"TOKUINMA", &VntUserData::CustomerNameA, 50},
    {"TOKUINMN", &VntUserData::CustomerNameJ, 80},
    {"BUNMN", &VntUserData::Department, 60},
    {"ZIPNO", &VntUserData::PostCode, 7},
    {"ADRSNMA", &VntUserData::AddressA, 50},
    {"ADRSNMN", &VntUserData::AddressJ, 80},
    {"SHOZAINMN", &VntUserData::AddressDetail, kWholeField},
    {"BUTEL", &VntUserData::Telephone, 30},
    {"MAIL", &VntUserData::Mail, 80},
    {"BUTANNMA", &VntUserData::PersonA, 20},
    {"BUTANNMN", &VntUserData::PersonJ, 30},
    // The user code comes from the key floppy: shown, never written by the customer screens.
    {"USERCODE", &VntUserData::UserCode, 0},
};
constexpr const char* kKindValue = "KAISHAKBN";
constexpr int32_t kKindPersonal = 0;
constexpr int32_t kKindCompany = 1;

constexpr TextValue<VntMachData> kMachTexts[] = {
    {"SYSNMN", &VntMachData::HostName, 40},     {"SOCHICD", &VntMachData::Manufacturer, 16},
    {"GUARANTEE", &VntMachData::LicenseNo, 16}, {"OSREV", &VntMachData::OSVersion, 32},
    {"OSNMA", &VntMachData::OSName, 30},        {"SYSGOKI", &VntMachData::ProductName, 40},
};

constexpr TextValue<VntVendData> kVendTexts[] = {
    {"SYSSHOPNMN", &VntVendData::Distributor, 50},  {"SYSEIGYOBUNMN", &VntVendData::SalesDept, 60},
    {"SYSEIGYONMN", &VntVendData::SalesPerson, 40}, {"SYSEIGYOTEL", &VntVendData::SalesTel, 30},
    {"SYSSEBU", &VntVendData::EngineerDept, 60},    {"SYSSENMN", &VntVendData::Engineer, 40},
    {"SYSSETEL", &VntVendData::EngineerTel, 30},
};

constexpr const char* kOptionValue = "OPTCDN";
constexpr const char* kOptionListValue = "OPTCDNLIST";

// The set-up record's fields differ in size, so they are described by offset.
struct SetupText {
    const char* value;
    std::size_t offset;
    std::size_t size;
};
constexpr SetupText kSetupTexts[] = {
    {"VERSION", offsetof(VntSetupData, Version), sizeof(VntSetupData::Version)},
    {"MAILADRS", offsetof(VntSetupData, MailAddress), sizeof(VntSetupData::MailAddress)},
    {"PHONENO", offsetof(VntSetupData, PhoneNo), sizeof(VntSetupData::PhoneNo)},
    {"ERRORREPLY", offsetof(VntSetupData, ErrorReply), sizeof(VntSetupData::ErrorReply)},
    {"URL1", offsetof(VntSetupData, URL1), sizeof(VntSetupData::URL1)},
    {"URL2", offsetof(VntSetupData, URL2), sizeof(VntSetupData::URL2)},
};
constexpr const char* kDefaultVersion = "3.51J";

// Reads the text fields of a record from the open SETTING key. false: the store failed.
template <class R>
bool ReadTexts(const ReadKey& key, R* record, Fields<R> fields) {
    for (const TextValue<R>& f : fields) {
        if (!rptset::vnt::ReadTextValue(key, rptset::vnt::kSettingKey, f.value, record->*f.field,
                                        VNT_TEXT_SIZE)) {
            return false;
        }
    }
    return true;
}

// The first text field a writer must refuse, or null; *why says what is wrong with it.
template <class R>
const TextValue<R>* FirstBadText(const R& record, Fields<R> fields, std::string* why) {
    for (const TextValue<R>& f : fields) {
        if (f.maxBytes == 0)
            continue;
        const char* text = record.*f.field;
        const std::size_t length = strnlen(text, VNT_TEXT_SIZE);
        if (length == VNT_TEXT_SIZE) {
            *why = "has no terminating zero within " + std::to_string(VNT_TEXT_SIZE) + " bytes";
            return &f;
        }
        if (length > f.maxBytes) {
            *why =
                "is " + std::to_string(length) + " bytes, more than " + std::to_string(f.maxBytes);
            return &f;
        }
    }
    return nullptr;
}

// Writes the text fields that writers store into the open SETTING key.
template <class R>
LONG WriteTexts(Key& key, const R& record, Fields<R> fields) {
    for (const TextValue<R>& f : fields) {
        if (f.maxBytes == 0)
            continue;
        const LONG rc = rptset::WriteText(key.get(), f.value, record.*f.field);
        if (rc != ERROR_SUCCESS)
            return rc;
    }
    return ERROR_SUCCESS;
}

// Reads a record under one read transaction: fill(fresh) reads the values over the defaults
// already in fresh. The caller's record receives fresh only on success.
template <class R, class Fill>
bool ReadRecord(R* record, std::unique_ptr<R> fresh, Fill fill) {
    Transaction transaction;
    if (transaction.status() != ERROR_SUCCESS) {
        ZOL_TRACE(TRACE_LEVEL_ERROR, "the store cannot be read (%d).",
                  static_cast<int>(transaction.status()));
        return false;
    }
    if (!fill(fresh.get())) {
        ZOL_TRACE(TRACE_LEVEL_ERROR, "the store cannot be read.");
        return false;
    }
    transaction.commit();
    *record = *fresh;
    return true;
}

// Writes under SETTING in one transaction: write(key) stores the values; all or nothing.
template <class Write>
bool WriteSetting(Write write) {
    Transaction transaction;
    LONG rc = transaction.status();
    if (rc == ERROR_SUCCESS) {
        Key key;
        rc = key.Create(HKEY_LOCAL_MACHINE, rptset::vnt::kSettingKey);
        if (rc == ERROR_SUCCESS)
            rc = write(key);
    }
    if (rc == ERROR_SUCCESS)
        rc = transaction.commit();
    if (rc != ERROR_SUCCESS) {
        ZOL_TRACE(TRACE_LEVEL_ERROR, "write of %s failed (%d); nothing written.",
                  rptset::vnt::kSettingKey, static_cast<int>(rc));
        return false;
    }
    return true;
}

// Refuses a record with a text field a writer must not store (traced with the field's value).
template <class R>
bool TextsAcceptable(const R& record, Fields<R> fields) {
    std::string why;
    if (const TextValue<R>* bad = FirstBadText(record, fields, &why)) {
        ZOL_TRACE(TRACE_LEVEL_ERROR, "<[IN]%s %s.return 0.", bad->value, why.c_str());
        return false;
    }
    return true;
}

}  // namespace

extern "C" ZOLWIN_API int GetVntSetting(VntSetupData* record) {
    ZOL_TRACE(TRACE_LEVEL_TRACE, ">");
    if (record == nullptr) {
        ZOL_TRACE(TRACE_LEVEL_ERROR, "<[IN]Param error.return 0.");
        return 0;
    }
    auto fresh = std::make_unique<VntSetupData>();
    std::memcpy(fresh->Version, kDefaultVersion, std::strlen(kDefaultVersion) + 1);
    const bool ok = ReadRecord(record, std::move(fresh), [](VntSetupData* r) {
        ReadKey setup;
        ReadKey service;
        if (setup.Open(rptset::vnt::kSetupKey) != ERROR_SUCCESS ||
            service.Open(rptset::vnt::kServiceKey) != ERROR_SUCCESS) {
            return false;
        }
        auto* bytes = reinterpret_cast<char*>(r);
        for (const SetupText& f : kSetupTexts) {
            if (!rptset::vnt::ReadTextValue(setup, rptset::vnt::kSetupKey, f.value,
                                            bytes + f.offset, f.size)) {
                return false;
            }
        }
        using rptset::vnt::ReadDwordValue;
        return ReadDwordValue(setup, rptset::vnt::kSetupKey, "SETTING", &r->Setting) &&
               ReadDwordValue(setup, rptset::vnt::kSetupKey, "SavedAddressSet",
                              &r->SavedAddressSet) &&
               ReadDwordValue(service, rptset::vnt::kServiceKey, "KEYFDTYPE", &r->KeyFDType) &&
               ReadDwordValue(service, rptset::vnt::kServiceKey, "InstVantrelKeyFD", &r->KeyFDRead);
    });
    if (!ok) {
        ZOL_TRACE(TRACE_LEVEL_ERROR, "<return 0.");
        return 0;
    }
    ZOL_TRACE(TRACE_LEVEL_TRACE, "<return 1.");
    return 1;
}
static_assert(std::is_same_v<decltype(GetVntSetting), GetVntSetting_fn>);

extern "C" ZOLWIN_API int GetVntUserSetting(VntUserData* record) {
    ZOL_TRACE(TRACE_LEVEL_TRACE, ">");
    if (record == nullptr) {
        ZOL_TRACE(TRACE_LEVEL_ERROR, "<[IN]Param error.return 0.");
        return 0;
    }
    auto fresh = std::make_unique<VntUserData>();
    fresh->Kind = kKindCompany;
    const bool ok = ReadRecord(record, std::move(fresh), [](VntUserData* r) {
        ReadKey key;
        if (key.Open(rptset::vnt::kSettingKey) != ERROR_SUCCESS || !ReadTexts(key, r, kUserTexts)) {
            return false;
        }
        uint32_t kind = kKindCompany;
        if (!rptset::vnt::ReadDwordValue(key, rptset::vnt::kSettingKey, kKindValue, &kind))
            return false;
        if (kind != kKindPersonal && kind != kKindCompany) {
            ZOL_TRACE(TRACE_LEVEL_ERROR, "%s is %u, not a customer kind; company used.", kKindValue,
                      kind);
            kind = kKindCompany;
        }
        r->Kind = static_cast<int32_t>(kind);
        return true;
    });
    if (!ok) {
        ZOL_TRACE(TRACE_LEVEL_ERROR, "<return 0.");
        return 0;
    }
    ZOL_TRACE(TRACE_LEVEL_TRACE, "<return 1.");
    return 1;
}
static_assert(std::is_same_v<decltype(GetVntUserSetting), GetVntUserSetting_fn>);

extern "C" ZOLWIN_API int SetVntUserSetting(VntUserData* record) {
    ZOL_TRACE(TRACE_LEVEL_TRACE, ">");
    if (record == nullptr) {
        ZOL_TRACE(TRACE_LEVEL_ERROR, "<[IN]Param error.return 0.");
        return 0;
    }
    if (record->Kind != kKindPersonal && record->Kind != kKindCompany) {
        ZOL_TRACE(TRACE_LEVEL_ERROR, "<[IN]Kind %d is not 0 or 1.return 0.",
                  static_cast<int>(record->Kind));
        return 0;
    }
    if (!TextsAcceptable(*record, kUserTexts))
        return 0;
    const bool ok = WriteSetting([record](Key& key) {
        const LONG rc =
            rptset::WriteDword(key.get(), kKindValue, static_cast<uint32_t>(record->Kind));
        return rc != ERROR_SUCCESS ? rc : WriteTexts(key, *record, kUserTexts);
    });
    if (!ok) {
        ZOL_TRACE(TRACE_LEVEL_ERROR, "<return 0.");
        return 0;
    }
    ZOL_TRACE(TRACE_LEVEL_TRACE, "<return 1.");
    return 1;
}
static_assert(std::is_same_v<decltype(SetVntUserSetting), SetVntUserSetting_fn>);

namespace {

// The machine and vendor records are text fields only: one reader and one writer serve both.
template <class R>
int GetTextRecord(R* record, Fields<R> fields) {
    const bool ok = ReadRecord(record, std::make_unique<R>(), [fields](R* r) {
        ReadKey key;
        return key.Open(rptset::vnt::kSettingKey) == ERROR_SUCCESS && ReadTexts(key, r, fields);
    });
    if (!ok) {
        ZOL_TRACE(TRACE_LEVEL_ERROR, "<return 0.");
        return 0;
    }
    ZOL_TRACE(TRACE_LEVEL_TRACE, "<return 1.");
    return 1;
}

template <class R>
int SetTextRecord(const R& record, Fields<R> fields) {
    if (!TextsAcceptable(record, fields))
        return 0;
    if (!WriteSetting([&](Key& key) { return WriteTexts(key, record, fields); })) {
        ZOL_TRACE(TRACE_LEVEL_ERROR, "<return 0.");
        return 0;
    }
    ZOL_TRACE(TRACE_LEVEL_TRACE, "<return 1.");
    return 1;
}

}  // namespace

extern "C" ZOLWIN_API int GetVntMachSetting(VntMachData* record) {
    ZOL_TRACE(TRACE_LEVEL_TRACE, ">");
    if (record == nullptr) {
        ZOL_TRACE(TRACE_LEVEL_ERROR, "<[IN]Param error.return 0.");
        return 0;
    }
    return GetTextRecord(record, kMachTexts);
}
static_assert(std::is_same_v<decltype(GetVntMachSetting), GetVntMachSetting_fn>);

extern "C" ZOLWIN_API int SetVntMachSetting(VntMachData* record) {
    ZOL_TRACE(TRACE_LEVEL_TRACE, ">");
    if (record == nullptr) {
        ZOL_TRACE(TRACE_LEVEL_ERROR, "<[IN]Param error.return 0.");
        return 0;
    }
    return SetTextRecord(*record, kMachTexts);
}
static_assert(std::is_same_v<decltype(SetVntMachSetting), SetVntMachSetting_fn>);

extern "C" ZOLWIN_API int GetVntVendSetting(VntVendData* record, char** vendors, int* count) {
    ZOL_TRACE(TRACE_LEVEL_TRACE, "> [IN] vendors=%p", static_cast<void*>(vendors));
    if (record == nullptr || (vendors != nullptr && count == nullptr)) {
        ZOL_TRACE(TRACE_LEVEL_ERROR, "<[IN]Param error.return 0.");
        return 0;
    }
    if (vendors == nullptr)
        return GetTextRecord(record, kVendTexts);

    // Record and distributor list from one read transaction; either both reach the caller or
    // neither does.
    std::vector<std::string> names;
    auto fresh = std::make_unique<VntVendData>();
    Transaction transaction;
    bool ok = transaction.status() == ERROR_SUCCESS;
    if (ok) {
        ReadKey key;
        ok = key.Open(rptset::vnt::kSettingKey) == ERROR_SUCCESS &&
             ReadTexts(key, fresh.get(), kVendTexts) &&
             rptset::vnt::ReadList(rptset::vnt::kVendorListKey, VNT_VENDOR_LIST_MAX, &names);
        transaction.commit();
    }
    if (!ok) {
        ZOL_TRACE(TRACE_LEVEL_ERROR, "<the store cannot be read.return 0.");
        return 0;
    }
    if (!rptset::vnt::FillNames(names, vendors, count)) {
        ZOL_TRACE(TRACE_LEVEL_ERROR, "<[IN]Param error.return 0.");
        return 0;
    }
    *record = *fresh;
    ZOL_TRACE(TRACE_LEVEL_TRACE, "<return 1. count=%d", *count);
    return 1;
}
static_assert(std::is_same_v<decltype(GetVntVendSetting), GetVntVendSetting_fn>);

extern "C" ZOLWIN_API int SetVntVendSetting(VntVendData* record) {
    ZOL_TRACE(TRACE_LEVEL_TRACE, ">");
    if (record == nullptr) {
        ZOL_TRACE(TRACE_LEVEL_ERROR, "<[IN]Param error.return 0.");
        return 0;
    }
    return SetTextRecord(*record, kVendTexts);
}
static_assert(std::is_same_v<decltype(SetVntVendSetting), SetVntVendSetting_fn>);

extern "C" ZOLWIN_API int GetVntOptSetting(VntOptData* record) {
    ZOL_TRACE(TRACE_LEVEL_TRACE, ">");
    if (record == nullptr) {
        ZOL_TRACE(TRACE_LEVEL_ERROR, "<[IN]Param error.return 0.");
        return 0;
    }
    const bool ok = ReadRecord(record, std::make_unique<VntOptData>(), [](VntOptData* r) {
        ReadKey key;
        std::vector<std::string> kinds;
        if (key.Open(rptset::vnt::kSettingKey) != ERROR_SUCCESS ||
            !rptset::vnt::ReadDwordValue(key, rptset::vnt::kSettingKey, kOptionValue,
                                         &r->OptionCode) ||
            !rptset::vnt::ReadList(rptset::vnt::kOptionListKey, VNT_OPTION_LIST_MAX, &kinds)) {
            return false;
        }
        // A code the list does not hold keeps its number with an empty name, so that the
        // option screen can show that no known kind is chosen.
        if (r->OptionCode < kinds.size()) {
            const std::string& name = kinds[r->OptionCode];
            std::memcpy(r->OptionName, name.c_str(), name.size() + 1);
        } else {
            ZOL_TRACE(TRACE_LEVEL_ERROR, "%s %u is not in the option kind list.", kOptionValue,
                      r->OptionCode);
        }
        return true;
    });
    if (!ok) {
        ZOL_TRACE(TRACE_LEVEL_ERROR, "<return 0.");
        return 0;
    }
    ZOL_TRACE(TRACE_LEVEL_TRACE, "<return 1.");
    return 1;
}
static_assert(std::is_same_v<decltype(GetVntOptSetting), GetVntOptSetting_fn>);

extern "C" ZOLWIN_API int SetVntOptSetting(VntOptData* record) {
    ZOL_TRACE(TRACE_LEVEL_TRACE, ">");
    if (record == nullptr) {
        ZOL_TRACE(TRACE_LEVEL_ERROR, "<[IN]Param error.return 0.");
        return 0;
    }
    // Only the code is stored; the name is the list's. The code is checked against the list
    // inside the writing transaction, so the list cannot change in between.
    bool known = true;
    const bool ok = WriteSetting([record, &known](Key& key) -> LONG {
        std::vector<std::string> kinds;
        if (!rptset::vnt::ReadList(rptset::vnt::kOptionListKey, VNT_OPTION_LIST_MAX, &kinds))
            return ERROR_REGISTRY_IO_FAILED;
        if (record->OptionCode >= kinds.size()) {
            known = false;
            return ERROR_INVALID_PARAMETER;
        }
        const LONG rc = rptset::WriteDword(key.get(), kOptionValue, record->OptionCode);
        if (rc != ERROR_SUCCESS)
            return rc;
        // The record is the single option held: a list of several (vntoption.cpp) ends here.
        const LONG removed = RegDeleteValue(key.get(), kOptionListValue);
        return removed == ERROR_FILE_NOT_FOUND ? ERROR_SUCCESS : removed;
    });
    if (!known) {
        ZOL_TRACE(TRACE_LEVEL_ERROR, "<[IN]OptionCode %u is not in the option kind list.return 0.",
                  record->OptionCode);
        return 0;
    }
    if (!ok) {
        ZOL_TRACE(TRACE_LEVEL_ERROR, "<return 0.");
        return 0;
    }
    ZOL_TRACE(TRACE_LEVEL_TRACE, "<return 1.");
    return 1;
}
static_assert(std::is_same_v<decltype(SetVntOptSetting), SetVntOptSetting_fn>);
