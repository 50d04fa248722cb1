#pragma once

// The client half of our subset of the Active Template Library: owners of interface pointers and
// BSTRs under ATL's names and with ATL's meaning. A compiler that brings the real
// library uses that one. One difference: where ATL throws when memory is short, these stay empty.

#ifdef _MSC_VER
#include <atlcomcli.h>
#else

#include <windows.h>

#include <oleauto.h>
#include <unknwn.h>

#include <cassert>
#include <cstddef>
#include <type_traits>
#include <utility>

#define ATLASSERT(expression) assert(expression)

namespace ATL {

// A counted reference to a COM interface.
template <class T>
class CComPtr {
public:
    using _PtrClass = T;

    CComPtr() noexcept = default;
    CComPtr(std::nullptr_t) noexcept {}      // NOLINT(google-explicit-constructor): as in ATL
    CComPtr(T* other) noexcept : p(other) {  // NOLINT(google-explicit-constructor): as in ATL
        if (p != nullptr) p->AddRef();
    }
    CComPtr(const CComPtr& other) noexcept : CComPtr(other.p) {}
    CComPtr(CComPtr&& other) noexcept : p(other.Detach()) {}
    ~CComPtr() { Release(); }

    CComPtr& operator=(T* other) noexcept {
        CComPtr(other).Swap(*this);
        return *this;
    }
    // NOLINTNEXTLINE(bugprone-unhandled-self-assignment): the copy is made before anything goes
    CComPtr& operator=(const CComPtr& other) noexcept {
        CComPtr(other).Swap(*this);
        return *this;
    }
    CComPtr& operator=(CComPtr&& other) noexcept {
        CComPtr(std::move(other)).Swap(*this);
        return *this;
    }

    operator T*() const noexcept { return p; }  // NOLINT(google-explicit-constructor): as in ATL
    T& operator*() const noexcept {
        ATLASSERT(p != nullptr);
        return *p;
    }
    T* operator->() const noexcept {
        ATLASSERT(p != nullptr);
        return p;
    }
    // For out parameters: only while empty, or the reference held would be lost.
    T** operator&() noexcept {  // NOLINT(google-runtime-operator): as in ATL
        ATLASSERT(p == nullptr);
        return &p;
    }
    bool operator!() const noexcept { return p == nullptr; }

    // Empty before the interface hears of it, so that a call coming back finds nothing to release.
    void Release() noexcept {
        T* const old = std::exchange(p, nullptr);
        if (old != nullptr) old->Release();
    }
    void Attach(T* other) noexcept {
        T* const old = std::exchange(p, other);
        if (old != nullptr) old->Release();
    }
    [[nodiscard]] T* Detach() noexcept { return std::exchange(p, nullptr); }
    HRESULT CopyTo(T** out) const noexcept {
        if (out == nullptr) return E_POINTER;
        *out = p;
        if (p != nullptr) p->AddRef();
        return S_OK;
    }
    template <class Q>
    HRESULT QueryInterface(Q** out) const noexcept {
        ATLASSERT(p != nullptr && out != nullptr && *out == nullptr);
        return p->QueryInterface(__uuidof(Q), reinterpret_cast<void**>(out));
    }
    HRESULT CoCreateInstance(REFCLSID clsid, IUnknown* outer = nullptr,
                             DWORD context = CLSCTX_ALL) noexcept {
        ATLASSERT(p == nullptr);
        return ::CoCreateInstance(clsid, outer, context, __uuidof(T), reinterpret_cast<void**>(&p));
    }
    // Same object: COM fixes that only IUnknown pointers may be compared.
    bool IsEqualObject(IUnknown* other) const noexcept {
        if (p == nullptr || other == nullptr) return p == nullptr && other == nullptr;
        CComPtr<IUnknown> mine;
        CComPtr<IUnknown> theirs;
        p->QueryInterface(IID_IUnknown, reinterpret_cast<void**>(&mine));
        other->QueryInterface(IID_IUnknown, reinterpret_cast<void**>(&theirs));
        return mine.p == theirs.p;
    }

    T* p = nullptr;

private:
    void Swap(CComPtr& other) noexcept { std::swap(p, other.p); }
};

// A CComPtr that asks what it is given for its own interface; empty when that has none.
template <class T>
class CComQIPtr : public CComPtr<T> {
public:
    CComQIPtr() noexcept = default;
    CComQIPtr(T* other) noexcept : CComPtr<T>(other) {}  // NOLINT(google-explicit-constructor)
    CComQIPtr(IUnknown* other) noexcept  // NOLINT(google-explicit-constructor): as in ATL
        requires(!std::is_same_v<T, IUnknown>) {
        if (other != nullptr)
            other->QueryInterface(__uuidof(T), reinterpret_cast<void**>(&this->p));
    }
};

// An owned BSTR. A null BSTR is an empty text.
class CComBSTR {
public:
    CComBSTR() noexcept = default;
    CComBSTR(const OLECHAR* text) noexcept  // NOLINT(google-explicit-constructor): as in ATL
        : m_str(text == nullptr ? nullptr : ::SysAllocString(text)) {}
    CComBSTR(int length, const OLECHAR* text) noexcept
        : m_str(length < 0 ? nullptr : ::SysAllocStringLen(text, static_cast<UINT>(length))) {}
    CComBSTR(const CComBSTR& other) noexcept : m_str(other.Copy()) {}
    CComBSTR(CComBSTR&& other) noexcept : m_str(other.Detach()) {}
    ~CComBSTR() { ::SysFreeString(m_str); }

    CComBSTR& operator=(const CComBSTR& other) noexcept {
        Attach(other.Copy());
        return *this;
    }
    CComBSTR& operator=(CComBSTR&& other) noexcept {
        Attach(other.Detach());
        return *this;
    }

    operator BSTR() const noexcept { return m_str; }  // NOLINT(google-explicit-constructor)
    // For out parameters: only while empty.
    BSTR* operator&() noexcept {  // NOLINT(google-runtime-operator): as in ATL
        ATLASSERT(m_str == nullptr);
        return &m_str;
    }
    bool operator!() const noexcept { return m_str == nullptr; }

    // In 16-bit units.
    [[nodiscard]] unsigned int Length() const noexcept { return ::SysStringLen(m_str); }
    [[nodiscard]] BSTR Copy() const noexcept {
        return m_str == nullptr ? nullptr : ::SysAllocStringLen(m_str, ::SysStringLen(m_str));
    }
    void Attach(BSTR text) noexcept {
        if (text == m_str) return;
        ::SysFreeString(std::exchange(m_str, text));
    }
    [[nodiscard]] BSTR Detach() noexcept { return std::exchange(m_str, nullptr); }
    void Empty() noexcept { Attach(nullptr); }

    BSTR m_str = nullptr;
};

}  // namespace ATL

using namespace ATL;  // NOLINT(google-build-using-namespace): as the real headers do

#endif
