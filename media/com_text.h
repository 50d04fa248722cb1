#pragma once

// Converts between BSTR and juce::String. Both hold 16-bit units, so nothing is lost except text
// after an embedded NUL, which a juce::String cannot hold.

#include <windows.h>

#include <juce_core/juce_core.h>
#include <oleauto.h>

#include <algorithm>
#include <new>

#include "platform/atl/atlbase.h"

namespace orvane {

[[nodiscard]] inline juce::String textOf(BSTR text) {
    static_assert(sizeof(wchar_t) == sizeof(juce::CharPointer_UTF16::CharType));
    if (!text) return {};
    // Copied unit by unit: decoding an unpaired surrogate would drop the unit next to it.
    const auto* begin = reinterpret_cast<const juce::CharPointer_UTF16::CharType*>(text);
    const auto* end = std::find(begin, begin + SysStringLen(text), 0);
    return {juce::CharPointer_UTF16(begin), juce::CharPointer_UTF16(end)};
}

// Throws std::bad_alloc when memory is short. The player takes a null BSTR for an empty text, which
// would clear the tag that it is written to.
[[nodiscard]] inline CComBSTR bstrOf(const juce::String& text) {
    CComBSTR copy(text.toWideCharPointer());
    if (!copy) throw std::bad_alloc();
    return copy;
}

}  // namespace orvane
