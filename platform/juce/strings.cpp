// What the product uses of juce_core: strings, their lists, and locks. juce_core.cpp would bring
// along files, network, XML and scripts: the unwind tables keep all functions of an object.
#define JUCE_CORE_INCLUDE_NATIVE_HEADERS 1
#include <juce_core/juce_core.h>

#include <cstdarg>
#include <cwctype>
#include <juce_core/text/juce_CharacterFunctions.cpp>
#include <juce_core/text/juce_String.cpp>
#include <juce_core/text/juce_StringArray.cpp>
#include <juce_core/text/juce_StringPairArray.cpp>
#include <locale>

namespace juce {

#if JUCE_DEBUG
this_will_fail_to_link_if_some_of_your_compile_units_are_built_in_debug_mode::
    this_will_fail_to_link_if_some_of_your_compile_units_are_built_in_debug_mode() noexcept {}
#else
this_will_fail_to_link_if_some_of_your_compile_units_are_built_in_release_mode::
    this_will_fail_to_link_if_some_of_your_compile_units_are_built_in_release_mode() noexcept {}
#endif

#if JUCE_WINDOWS
CriticalSection::CriticalSection() noexcept {
    static_assert(sizeof(CRITICAL_SECTION) <= sizeof(lock));
    InitializeCriticalSection((CRITICAL_SECTION*)&lock);
}
CriticalSection::~CriticalSection() noexcept { DeleteCriticalSection((CRITICAL_SECTION*)&lock); }
void CriticalSection::enter() const noexcept { EnterCriticalSection((CRITICAL_SECTION*)&lock); }
void CriticalSection::exit() const noexcept { LeaveCriticalSection((CRITICAL_SECTION*)&lock); }
#endif

}  // namespace juce
