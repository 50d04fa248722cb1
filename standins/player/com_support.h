#pragma once

// What every COM object of the stand-in player shares: reference counting with QueryInterface over
// a list of interfaces, IDispatch methods that nobody calls, and text.

#include <windows.h>

#include <oaidl.h>

#include <atomic>
#include <string>
#include <utility>

#include "platform/atl/atlcomcli.h"
#include "standins/support/wide_text.h"

namespace orvane::standin {

// Objects handed out and not yet released, in the whole process: how a test sees a leak.
inline std::atomic<long>& liveObjects() {
    static std::atomic<long> count{0};
    return count;
}

// Calls and references (AddRef, Release, QueryInterface) on any thread but the one that made the
// object, in the whole process. The player's objects belong to its own thread: 0 is the only good
// number.
inline std::atomic<long>& usesOnOtherThreads() {
    static std::atomic<long> count{0};
    return count;
}

// Counting is atomic: a reference on a wrong thread is to be counted, not to corrupt the object.
template <typename... Interfaces>
class ComObject : public Interfaces... {
public:
    ComObject() { ++liveObjects(); }
    virtual ~ComObject() { --liveObjects(); }
    ComObject(const ComObject&) = delete;
    ComObject& operator=(const ComObject&) = delete;

    STDMETHOD_(ULONG, AddRef)() override {
        noteThread();
        return static_cast<ULONG>(++m_references);
    }
    STDMETHOD_(ULONG, Release)() override {
        noteThread();
        const long left = --m_references;
        if (left == 0) delete this;
        return static_cast<ULONG>(left);
    }
    STDMETHOD(QueryInterface)(REFIID iid, void** out) override {
        if (out == nullptr) return E_POINTER;
        *out = find(iid);
        if (*out == nullptr) {
            noteThread();
            return E_NOINTERFACE;
        }
        AddRef();
        return S_OK;
    }

protected:
    // The pointer to answer for `iid`, not counted; null when the object lacks it.
    virtual void* find(REFIID iid) = 0;

    // `pointer` when `iid` is one of a chain of interfaces that derive from one another.
    template <typename... Chain, typename Pointer>
    static void* match(REFIID iid, Pointer* pointer) {
        return ((iid == __uuidof(Chain)) || ...) ? static_cast<void*>(pointer) : nullptr;
    }

private:
    void noteThread() const {
        if (GetCurrentThreadId() != m_thread) ++usesOnOtherThreads();
    }

    const DWORD m_thread = GetCurrentThreadId();
    std::atomic<long> m_references{1};
};

// The automation half that scripts would use; plug-ins call the interfaces directly.
template <typename... Interfaces>
class DispatchObject : public ComObject<Interfaces...> {
public:
    STDMETHOD(GetTypeInfoCount)(UINT* count) override {
        if (count != nullptr) *count = 0;
        return E_NOTIMPL;
    }
    STDMETHOD(GetTypeInfo)(UINT, LCID, ITypeInfo**) override { return E_NOTIMPL; }
    STDMETHOD(GetIDsOfNames)(REFIID, LPOLESTR*, UINT, LCID, DISPID*) override { return E_NOTIMPL; }
    STDMETHOD(Invoke)
    (DISPID, REFIID, LCID, WORD, DISPPARAMS*, VARIANT*, EXCEPINFO*, UINT*) override {
        return E_NOTIMPL;
    }
};

// A property of the player's that nothing here asks for.
#define ORVANE_PROPERTY_NOT_MADE(name, type)                    \
    STDMETHOD(get_##name)(type*) override { return E_NOTIMPL; } \
    STDMETHOD(put_##name)(type) override { return E_NOTIMPL; }

// A new object, by one of its interfaces; its first reference belongs to the result.
template <typename T, typename Interface, typename... Arguments>
CComPtr<Interface> makeObject(Arguments&&... arguments) {
    CComPtr<Interface> object;
    object.Attach(new T(std::forward<Arguments>(arguments)...));
    return object;
}

// Asked for privately, to know our own objects of one kind from other people's: the object behind
// an interface when its find() answers `own` with itself, else empty.
template <typename T>
CComPtr<T> ownObject(IUnknown* object, REFIID own) {
    void* found = nullptr;
    CComPtr<T> result;
    if (object != nullptr && SUCCEEDED(object->QueryInterface(own, &found)))
        result.Attach(static_cast<T*>(found));
    return result;
}

inline std::wstring textOf(BSTR text) { return {text, text + SysStringLen(text)}; }

// Hands out a new BSTR that the caller frees.
inline HRESULT giveText(const std::wstring& text, BSTR* out) {
    *out = SysAllocStringLen(text.data(), static_cast<UINT>(text.size()));
    return *out == nullptr ? E_OUTOFMEMORY : S_OK;
}

}  // namespace orvane::standin
