#pragma once

// Attribute values between the form that the runtime's interfaces give and take and the form that
// stands in a file. They differ in text (terminated in the interfaces), truth values (four bytes)
// and pictures (a WM_PICTURE with pointers instead of one run of bytes).

#include <windows.h>

#include <optional>
#include <vector>

#include "platform/wm_format.h"
#include "standins/asf/asf_file.h"

namespace orvane::standin {

struct InterfaceValue {
    WMT_ATTR_DATATYPE type;  // binary when the interfaces have no type for it
    std::vector<std::uint8_t> bytes;
};

// The value for a buffer at `at`: the pointers of a picture point into that. Nothing when it is a
// picture that cannot be read.
std::optional<InterfaceValue> toInterface(const asf::Attribute& attribute, const BYTE* at);

// Takes a value from a caller: S_OK, E_POINTER, E_INVALIDARG for a length that the type cannot
// have, or NS_E_SDK_BUFFERTOOSMALL for a picture record that is cut short. `out` keeps its name,
// stream, language and place.
HRESULT fromInterface(WMT_ATTR_DATATYPE type, const BYTE* value, DWORD length, asf::Attribute& out);

}  // namespace orvane::standin
