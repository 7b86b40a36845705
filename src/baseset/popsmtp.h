// Mail-server logins of the remote report service's internet-mail delivery: the dialog for
// POP before SMTP and SMTP authentication, and the four accessors of their stored values.
#pragma once

#include <zolwin.h>

#include "records.h"
#include "regpaths.h"

// Key of every value below, under HKEY_LOCAL_MACHINE.
inline constexpr const char* kMailLoginKey = ZOL_KEY_MAIL_SETTING;

// The POP port and wait time a login starts with when nothing is stored.
inline constexpr DWORD kDefaultPopPort = 110;
inline constexpr DWORD kDefaultPopWait = 0;

// The modal dialog. A flag of 1 enables its half (POP before SMTP, SMTP authentication); any
// other value shows that half disabled and leaves its values alone.
void PopAndSMTPSet(HINSTANCE hLibRPTSET, int popFlag, int smtpFlag);

// Reads SMTPAuthUser and SMTPAuthPass (decoded) through "AMAMRegReadEx"; a value that cannot be
// read leaves its field empty. 0, or -1 for a null argument or an unbound "AMAMRegReadEx".
int GetSMTPParam(HINSTANCE hLibRPTSET, SMTPParam* smtp);
// Writes both values through "AMAMRegWrite", the password encoded, in one transaction: every
// write is attempted and a failed one traced, and then the record lands whole or not at all.
// 0, or -1 on any failure, a null argument or an unbound "AMAMRegWrite".
int PutSMTPParam(HINSTANCE hLibRPTSET, const SMTPParam* smtp);
// Reads POPServer, POPUser, POPPass (decoded), POPPort (110 when unreadable) and POPTime
// (*waitTime, 0 when unreadable). 0, or -1 as GetSMTPParam.
int GetPopParam(HINSTANCE hLibRPTSET, POPParam* pop, DWORD* waitTime);
// Writes the five values in that order, as PutSMTPParam writes its two.
int PutPopParam(HINSTANCE hLibRPTSET, const POPParam* pop, DWORD waitTime);
