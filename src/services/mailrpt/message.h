// The mail that carries a report: headers and body in ISO-2022-JP when the report is Japanese
// (UTF-8 when a character has no ISO-2022-JP form), else in US-ASCII or UTF-8.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "report.h"

namespace mailrpt {

// An RFC 5322 message, lines ended by CR LF; nullopt with *error when the subject holds a
// control character.
std::optional<std::string> ComposeMail(const vntreport::Report& report, std::string_view from,
                                       const std::vector<std::string>& to, std::string_view subject,
                                       std::string* error);

// A header text as RFC 2047 encoded words (folded), or the text itself when it is ASCII.
std::string EncodeHeaderText(std::string_view utf8, bool japanese);

std::string Base64(std::string_view data);

}  // namespace mailrpt
