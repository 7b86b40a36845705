// The remote report service's destination screens: where its reports are mailed (internet mail)
// and the manager it reports through (via-manager method), with the newt-free checks behind them.
#pragma once

#include <zolwin.h>

#include <cstddef>
#include <cstdint>
#include <string>

#include "records.h"

// Longest To list and subject the mail destination keeps, in bytes.
inline constexpr std::size_t kMailDestTextMax = VNT_MAILTO_SIZE - 1;

// What the mail destination screen's entries hold on OK.
struct MailDestEntries {
    std::string to, subject;
};
// The message ID refusing a To list or subject too long to store, or null; then both are stored
// in mail. The addresses themselves are CheckMailAddr's to judge.
const char* ApplyMailDestEntries(const MailDestEntries& entries, VxMLDestData& mail);

// What the via-manager screen's entries hold on OK, and what is stored of them.
struct ViaManagerEntries {
    std::string address, port;
};
struct ViaManagerValues {
    std::string ip;
    std::uint32_t port = 0;
};
// Checks the entries in the screen's order (address, port, address length, then address and port
// range with CheckPortAndIP flag 1): the refusing message ID, or null with the address resolved
// and the port in *out. lib is the report-settings library that checks addresses.
const char* CheckViaManagerEntries(const ViaManagerEntries& entries, HMODULE lib,
                                   ViaManagerValues* out);
