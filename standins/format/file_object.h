#pragma once

// What a reader and an editor have in common: their own interface and that of the header, one
// reference count, one identity. Made with one reference; the last Release deletes it.

#include <windows.h>

#include <atomic>

#include "standins/format/guarded.h"
#include "standins/format/header_info.h"

namespace orvane::standin {

// `Base` is an interface that `Interface` inherits, or the same one.
template <typename Derived, typename Interface, typename Base = Interface>
class FileObject : public Interface, public HeaderInfo {
public:
    STDMETHOD(QueryInterface)(REFIID id, void** out) override {
        if (!out) return E_POINTER;
        *out = nullptr;
        if (id == __uuidof(IUnknown) || id == __uuidof(Interface) || id == __uuidof(Base)) {
            *out = static_cast<Interface*>(this);
        } else if (id == __uuidof(IWMHeaderInfo) || id == __uuidof(IWMHeaderInfo2) ||
                   id == __uuidof(IWMHeaderInfo3)) {
            *out = static_cast<IWMHeaderInfo3*>(this);
        } else {
            return E_NOINTERFACE;
        }
        AddRef();
        return S_OK;
    }
    STDMETHOD(Close)() override {
        if (!file().isOpen()) return ASF_E_INVALIDSTATE;
        file().close();
        return S_OK;
    }
    STDMETHOD_(ULONG, AddRef)() override { return ++m_references; }
    STDMETHOD_(ULONG, Release)() override {
        const ULONG left = --m_references;
        if (left == 0) delete static_cast<Derived*>(this);
        return left;
    }

protected:
    explicit FileObject(HeaderInfo::Kind kind) : HeaderInfo(kind) {}
    ~FileObject() = default;

private:
    std::atomic<ULONG> m_references{1};
};

}  // namespace orvane::standin
