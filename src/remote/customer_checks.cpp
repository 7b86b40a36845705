// The rules of the customer pages, without newt: what each field may hold, in the order the pages
// check them. Lengths are bytes of the program's encoding, as the service stores them (EUC-JP in
// Japanese mode).
#include <algorithm>
#include <cstring>
#include <string_view>

#include "remote/vantrel_menu.h"

namespace {

bool AllOf(std::string_view text, std::string_view allowed) {
    return std::all_of(text.begin(), text.end(), [allowed](char c) {
        return (c >= '0' && c <= '9') || allowed.find(c) != std::string_view::npos;
    });
}

std::string Field(const char (&field)[VNT_TEXT_SIZE]) {
    return std::string(field, strnlen(field, VNT_TEXT_SIZE));
}

// Copies text into a record's field: false, with the field untouched, when it does not fit.
bool Fits(const std::string& text) {
    return text.size() < VNT_TEXT_SIZE;
}

void Put(const std::string& text, char (&field)[VNT_TEXT_SIZE]) {
    std::memcpy(field, text.c_str(), text.size() + 1);
}

}  // namespace

CustomerPage1 Page1Of(const VntUserData& record) {
    return {record.Kind,
            Field(record.CustomerNameA),
            Field(record.CustomerNameJ),
            Field(record.Department),
            Field(record.PersonA),
            Field(record.PersonJ)};
}

CustomerPage2 Page2Of(const VntUserData& record) {
    return {Field(record.PostCode),      Field(record.AddressA),  Field(record.AddressJ),
            Field(record.AddressDetail), Field(record.Telephone), Field(record.Mail)};
}

const char* CustomerPage1Fault(const CustomerPage1& page, bool japanese) {
    if (page.nameA.empty() || page.nameA.size() >= 51)
        return "IDS_ERROR_MSG_USERNAMEK";
    if (japanese && (page.nameJ.empty() || page.nameJ.size() >= 81))
        return "IDS_ERROR_MSG_USERNAMEC";
    // The department is refused only above 60, and for a personal customer too.
    if (page.department.size() > 60)
        return "IDS_ERROR_MSG_DEPTNAME";
    const bool company = page.kind == 1;
    if (company && page.personA.size() >= 21)
        return "IDS_ERROR_MSG_PERSONNAMEK";
    if (company && page.personJ.size() >= 31)
        return "IDS_ERROR_MSG_PERSONNAMEC";
    return nullptr;
}

const char* CustomerPage2Fault(const CustomerPage2& page, bool japanese) {
    if (page.postCode.empty() || page.postCode.size() > 7)
        return "IDS_ERROR_MSG_POSTNUM";
    if (!AllOf(page.postCode, ""))
        return "IDS_ERROR_MSG_BADPOSTNUM";
    if (page.addressA.empty() || page.addressA.size() > 50)
        return "IDS_ERROR_MSG_ADDRESSK";
    if (japanese && (page.addressJ.empty() || page.addressJ.size() >= 81))
        return "IDS_ERROR_MSG_ADDRESSC";
    if (page.telephone.empty() || page.telephone.size() > 30)
        return "IDS_ERROR_MSG_TELNUM";
    if (!AllOf(page.telephone, "-()"))
        return "IDS_ERROR_MSG_BADTELNUM";
    if (page.mail.empty() || page.mail.size() >= 81)
        return "IDS_ERROR_MSG_MAILADDRESS";
    return nullptr;
}

bool ApplyPage1(const CustomerPage1& page, VntUserData& record) {
    if (page.kind != 0 && page.kind != 1)
        return false;
    for (const std::string* text :
         {&page.nameA, &page.nameJ, &page.department, &page.personA, &page.personJ}) {
        if (!Fits(*text))
            return false;
    }
    record.Kind = page.kind;
    Put(page.nameA, record.CustomerNameA);
    Put(page.nameJ, record.CustomerNameJ);
    Put(page.department, record.Department);
    Put(page.personA, record.PersonA);
    Put(page.personJ, record.PersonJ);
    return true;
}

bool ApplyPage2(const CustomerPage2& page, VntUserData& record) {
    for (const std::string* text : {&page.postCode, &page.addressA, &page.addressJ,
                                    &page.addressDetail, &page.telephone, &page.mail}) {
        if (!Fits(*text))
            return false;
    }
    Put(page.postCode, record.PostCode);
    Put(page.addressA, record.AddressA);
    Put(page.addressJ, record.AddressJ);
    Put(page.addressDetail, record.AddressDetail);
    Put(page.telephone, record.Telephone);
    Put(page.mail, record.Mail);
    return true;
}
