#pragma once

// UTF-8 to Windows' 16-bit text and back (MultiByteToWideChar); what is malformed becomes U+FFFD.

#include <string>
#include <string_view>

namespace orvane::standin::app {

std::wstring wideFrom(std::string_view utf8);
std::string utf8From(std::wstring_view wide);

}  // namespace orvane::standin::app
