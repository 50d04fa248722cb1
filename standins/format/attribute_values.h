#pragma once

// Attribute values between the form that the runtime's interfaces give and take and the form that
// stands in a file. They differ in text (terminated in the interfaces), truth values (four bytes)
// and pictures (a WM_PICTURE with pointers instead of one run of bytes).

#include <windows.h>

#include <optional>
#include <string_view>

#include "platform/wm_format.h"
#include "standins/asf/asf_file.h"

namespace orvane::standin {

// The interfaces' type of a value; what they have no type for is binary.
WMT_ATTR_DATATYPE interfaceType(const asf::Attribute& attribute);

// How many bytes the caller needs for the value; nothing when it is a picture that cannot be read.
std::optional<DWORD> interfaceSize(const asf::Attribute& attribute);

// Fills a buffer of interfaceSize() bytes. The pointers of a picture point into it.
void copyToInterface(const asf::Attribute& attribute, BYTE* buffer);

// Takes a value from a caller: S_OK, E_POINTER, E_INVALIDARG for a length that the type cannot
// have, or NS_E_SDK_BUFFERTOOSMALL for a picture record that is cut short. `out` keeps its name,
// stream, language and place.
HRESULT copyFromInterface(WMT_ATTR_DATATYPE type, const BYTE* value, DWORD length,
                          asf::Attribute& out);

}  // namespace orvane::standin
