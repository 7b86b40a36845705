// rptset.dll: the mail-server logins of the remote report service's internet-mail delivery (POP
// before SMTP, SMTP authentication), each written whole in one transaction. Passwords arrive
// plain, are encoded here with Ras_Encode on their way into the store, and never reach the trace.
#include <string.h>  // explicit_bzero: a wipe the compiler keeps

#include <zolwin.h>

#include <array>
#include <cstring>
#include <type_traits>

#include "regpaths.h"
#include "regvalue.h"
#include "rptset_api.h"

namespace {

constexpr const char* kLoginKey = ZOL_KEY_MAIL_SETTING;

constexpr uint32_t kMaxPort = 65535;
constexpr DWORD kMaxPopWait = 60;  // seconds

bool Terminated(const char (&field)[REG_TEXT_SIZE]) {
    return std::memchr(field, '\0', sizeof field) != nullptr;
}

// Why a POP record cannot be stored; nullptr when it can.
const char* PopRefusal(const POPParam& pop, DWORD wait) {
    if (!Terminated(pop.Server) || !Terminated(pop.User) || !Terminated(pop.Password))
        return "a POP text without its terminator";
    if (pop.Port < 1 || pop.Port > kMaxPort)
        return "a POP port outside 1 to 65535";
    if (wait > kMaxPopWait)
        return "a POP wait above 60 seconds";
    return nullptr;
}

const char* SmtpRefusal(const SMTPParam& smtp) {
    if (!Terminated(smtp.User) || !Terminated(smtp.Password))
        return "an SMTP text without its terminator";
    return nullptr;
}

// Writes a password encoded; the encoded copy is wiped whatever happens.
LONG WritePassword(HKEY key, const char* name, const char (&plain)[REG_TEXT_SIZE]) {
    std::array<char, REG_TEXT_SIZE> encoded{};
    const std::size_t length = strnlen(plain, encoded.size() - 1);
    std::memcpy(encoded.data(), plain, length);
    Ras_Encode(encoded.data(), static_cast<int>(length));
    const LONG rc = rptset::WriteText(key, name, encoded.data());
    explicit_bzero(encoded.data(), encoded.size());
    return rc;
}

LONG WritePop(HKEY key, const POPParam& pop, DWORD wait) {
    LONG rc;
    if ((rc = rptset::WriteText(key, "POPServer", pop.Server)) != ERROR_SUCCESS ||
        (rc = rptset::WriteText(key, "POPUser", pop.User)) != ERROR_SUCCESS ||
        (rc = WritePassword(key, "POPPass", pop.Password)) != ERROR_SUCCESS ||
        (rc = rptset::WriteDword(key, "POPPort", pop.Port)) != ERROR_SUCCESS) {
        return rc;
    }
    return rptset::WriteDword(key, "POPTime", wait);
}

LONG WriteSmtp(HKEY key, const SMTPParam& smtp) {
    const LONG rc = rptset::WriteText(key, "SMTPAuthUser", smtp.User);
    return rc != ERROR_SUCCESS ? rc : WritePassword(key, "SMTPAuthPass", smtp.Password);
}

// Both halves as given, in one transaction: all of them land or nothing does.
LONG WriteLogins(const POPParam* pop, DWORD wait, const SMTPParam* smtp) {
    zolwin::Transaction transaction;
    LONG rc = transaction.status();
    if (rc != ERROR_SUCCESS)
        return rc;
    rptset::Key key;
    if ((rc = key.Create(HKEY_LOCAL_MACHINE, kLoginKey)) != ERROR_SUCCESS)
        return rc;
    if (pop != nullptr && (rc = WritePop(key.get(), *pop, wait)) != ERROR_SUCCESS)
        return rc;
    if (smtp != nullptr && (rc = WriteSmtp(key.get(), *smtp)) != ERROR_SUCCESS)
        return rc;
    return transaction.commit();
}

}  // namespace

extern "C" ZOLWIN_API int AMAMSetMailLogin(const POPParam* pop, DWORD popWait,
                                           const SMTPParam* smtp) {
    ZOL_TRACE(TRACE_LEVEL_TRACE, "> pop=%s smtp=%s", pop != nullptr ? "yes" : "no",
              smtp != nullptr ? "yes" : "no");
    if (pop == nullptr && smtp == nullptr) {
        ZOL_TRACE(TRACE_LEVEL_ERROR, "<[IN]Param error.return FALSE.");
        return 0;
    }
    const char* why = pop != nullptr ? PopRefusal(*pop, popWait) : nullptr;
    if (why == nullptr && smtp != nullptr)
        why = SmtpRefusal(*smtp);
    if (why != nullptr) {
        ZOL_TRACE(TRACE_LEVEL_ERROR, "<refused: %s.return FALSE.", why);
        return 0;
    }
    const LONG rc = WriteLogins(pop, popWait, smtp);
    if (rc != ERROR_SUCCESS) {
        ZOL_TRACE(TRACE_LEVEL_ERROR, "<write of %s failed (%d).return FALSE.", kLoginKey,
                  static_cast<int>(rc));
        return 0;
    }
    ZOL_TRACE(TRACE_LEVEL_TRACE, "<return TRUE.");
    return 1;
}
static_assert(std::is_same_v<decltype(AMAMSetMailLogin), AMAMSetMailLogin_fn>);
