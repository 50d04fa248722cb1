#pragma once

// No exception leaves the module: callers are compiled by others.

#include <windows.h>

#include <new>

namespace orvane::standin {

template <typename Function>
HRESULT guarded(Function&& function) noexcept {
    try {
        return function();
    } catch (const std::bad_alloc&) {
        return E_OUTOFMEMORY;
    } catch (...) {
        return E_UNEXPECTED;
    }
}

}  // namespace orvane::standin
