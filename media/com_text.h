#pragma once

// Between the player's texts and ours: both are 16-bit units, so nothing is converted or lost but
// what follows an embedded NUL, which our strings cannot hold.

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
    // Unit by unit: read as characters, an unpaired surrogate would swallow its neighbour.
    const auto* begin = reinterpret_cast<const juce::CharPointer_UTF16::CharType*>(text);
    const auto* end = std::find(begin, begin + SysStringLen(text), 0);
    return {juce::CharPointer_UTF16(begin), juce::CharPointer_UTF16(end)};
}

// Throws when memory is short, as our strings do: to the player a null text is an empty one, which
// would clear the tag that it is written to.
[[nodiscard]] inline CComBSTR bstrOf(const juce::String& text) {
    CComBSTR copy(text.toWideCharPointer());
    if (!copy) throw std::bad_alloc();
    return copy;
}

}  // namespace orvane
