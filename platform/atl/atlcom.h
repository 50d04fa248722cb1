#pragma once

// The server half of our subset of the Active Template Library: reference counting, interface maps,
// the object templates (plain, aggregated, cached) and the class factory.

#include "platform/atl/atlbase.h"

#ifdef _MSC_VER
#include <atlcom.h>
#else

#include <climits>

namespace ATL {

// One row of an interface map: how to get from the class to the interface.
struct _ATL_INTMAP_ENTRY {
    const IID* piid;
    IUnknown* (*cast)(void* object);
};

class CComObjectRootBase {
public:
    HRESULT FinalConstruct() { return S_OK; }
    void FinalRelease() {}
    void SetVoid(void* /*context*/) noexcept {}
    void InternalFinalConstructAddRef() noexcept {}
    void InternalFinalConstructRelease() noexcept {}

    // IUnknown is the first row, whatever its interface.
    static HRESULT InternalQueryInterface(void* self, const _ATL_INTMAP_ENTRY* entries, REFIID iid,
                                          void** object) noexcept {
        if (object == nullptr) return E_POINTER;
        *object = nullptr;
        for (const _ATL_INTMAP_ENTRY* entry = entries; entry->piid != nullptr; ++entry) {
            if (!InlineIsEqualGUID(iid, IID_IUnknown) && !InlineIsEqualGUID(iid, *entry->piid))
                continue;
            IUnknown* const found = entry->cast(self);
            found->AddRef();
            *object = found;
            return S_OK;
        }
        return E_NOINTERFACE;
    }

    ULONG OuterAddRef() noexcept { return m_pOuterUnknown->AddRef(); }
    ULONG OuterRelease() noexcept { return m_pOuterUnknown->Release(); }
    HRESULT OuterQueryInterface(REFIID iid, void** object) noexcept {
        return m_pOuterUnknown->QueryInterface(iid, object);
    }

    LONG m_dwRef = 0;                     // of a plain object
    IUnknown* m_pOuterUnknown = nullptr;  // of a contained one; not counted, it contains us

protected:
    CComObjectRootBase() = default;
    ~CComObjectRootBase() = default;
};

template <class ThreadModel>
class CComObjectRootEx : public CComObjectRootBase {
public:
    using _ThreadModel = ThreadModel;

    ULONG InternalAddRef() noexcept { return ThreadModel::Increment(&m_dwRef); }
    ULONG InternalRelease() noexcept { return ThreadModel::Decrement(&m_dwRef); }
    void Lock() noexcept { m_critsec.Lock(); }
    void Unlock() noexcept { m_critsec.Unlock(); }

private:
    typename ThreadModel::CriticalSection m_critsec;
};

// While FinalRelease runs the count is far below zero, so that references taken and given back by
// calls coming in then do not delete the object a second time.
constexpr LONG kRefCountWhileDying = -(LONG_MAX / 2);

// The plain object: counts itself and deletes itself.
template <class Base>
class CComObject : private detail::ModuleLock, public Base {
public:
    explicit CComObject(void* /*context*/ = nullptr) {}
    // NOLINTNEXTLINE(modernize-use-override): not every base has a virtual destructor
    virtual ~CComObject() {
        this->m_dwRef = kRefCountWhileDying;
        this->FinalRelease();
    }

    STDMETHOD_(ULONG, AddRef)() override { return this->InternalAddRef(); }
    STDMETHOD_(ULONG, Release)() override {
        const ULONG left = this->InternalRelease();
        if (left == 0) delete this;
        return left;
    }
    STDMETHOD(QueryInterface)(REFIID iid, void** object) override {
        return this->_InternalQueryInterface(iid, object);
    }
};

// An object that its module keeps: only references beyond the module's own hold the module.
template <class Base>
class CComObjectCached : public Base {
public:
    explicit CComObjectCached(void* /*context*/ = nullptr) {}
    virtual ~CComObjectCached() {
        this->m_dwRef = kRefCountWhileDying;
        this->FinalRelease();
    }

    STDMETHOD_(ULONG, AddRef)() override {
        const ULONG count = this->InternalAddRef();
        if (count == 2) _pAtlModule->Lock();
        return count;
    }
    STDMETHOD_(ULONG, Release)() override {
        const ULONG left = this->InternalRelease();
        if (left == 0) delete this;
        if (left == 1) _pAtlModule->Unlock();
        return left;
    }
    STDMETHOD(QueryInterface)(REFIID iid, void** object) override {
        return this->_InternalQueryInterface(iid, object);
    }
};

// What lies inside an aggregated object: its interfaces belong to the outer object.
template <class Base>
class CComContainedObject : public Base {
public:
    explicit CComContainedObject(void* outer) {
        this->m_pOuterUnknown = static_cast<IUnknown*>(outer);
    }
    // NOLINTNEXTLINE(modernize-use-override): not every base has a virtual destructor
    virtual ~CComContainedObject() = default;

    STDMETHOD_(ULONG, AddRef)() override { return this->OuterAddRef(); }
    STDMETHOD_(ULONG, Release)() override { return this->OuterRelease(); }
    STDMETHOD(QueryInterface)(REFIID iid, void** object) override {
        return this->OuterQueryInterface(iid, object);
    }
};

// The aggregated object: the IUnknown that the outer object holds.
template <class Contained>
class CComAggObject : private detail::ModuleLock,
                      public IUnknown,
                      public CComObjectRootEx<typename Contained::_ThreadModel::ThreadModelNoCS> {
public:
    explicit CComAggObject(void* outer) : m_contained(outer) {}
    virtual ~CComAggObject() {
        this->m_dwRef = kRefCountWhileDying;
        FinalRelease();
    }

    HRESULT FinalConstruct() { return m_contained.FinalConstruct(); }
    void FinalRelease() { m_contained.FinalRelease(); }
    // FinalConstruct of the contained object may hand out interfaces, counted by the outer object.
    void InternalFinalConstructAddRef() noexcept { this->InternalAddRef(); }
    void InternalFinalConstructRelease() noexcept { this->InternalRelease(); }

    STDMETHOD_(ULONG, AddRef)() override { return this->InternalAddRef(); }
    STDMETHOD_(ULONG, Release)() override {
        const ULONG left = this->InternalRelease();
        if (left == 0) delete this;
        return left;
    }
    STDMETHOD(QueryInterface)(REFIID iid, void** object) override {
        if (object == nullptr) return E_POINTER;
        if (!InlineIsEqualGUID(iid, IID_IUnknown))
            return m_contained._InternalQueryInterface(iid, object);
        *object = static_cast<IUnknown*>(this);
        AddRef();
        return S_OK;
    }

    CComContainedObject<Contained> m_contained;
};

// Creates, completes and asks for an interface; a failure on the way destroys the object and is
// the answer.
template <class T>
class CComCreator {
public:
    static HRESULT WINAPI CreateInstance(void* context, REFIID iid, void** object) {
        if (object == nullptr) return E_POINTER;
        *object = nullptr;
        T* created = nullptr;
        try {
            created = new T(context);
        } catch (...) {
            return E_OUTOFMEMORY;  // the caller is no C++ of ours
        }
        created->SetVoid(context);
        created->InternalFinalConstructAddRef();
        HRESULT result = created->FinalConstruct();
        created->InternalFinalConstructRelease();
        if (SUCCEEDED(result)) result = created->QueryInterface(iid, object);
        if (FAILED(result)) delete created;
        return result;
    }
};

// T1 without, T2 with an outer object.
template <class T1, class T2>
class CComCreator2 {
public:
    static HRESULT WINAPI CreateInstance(void* outer, REFIID iid, void** object) {
        return outer == nullptr ? T1::CreateInstance(nullptr, iid, object)
                                : T2::CreateInstance(outer, iid, object);
    }
};

}  // namespace ATL

// The interface map of a class. The first row is the object's identity.
#define BEGIN_COM_MAP(x)                                                        \
public:                                                                         \
    using _ComMapClass = x;                                                     \
    IUnknown* _GetRawUnknown() noexcept { return _GetEntries()[0].cast(this); } \
    IUnknown* GetUnknown() noexcept { return _GetRawUnknown(); }                \
    HRESULT _InternalQueryInterface(REFIID iid, void** object) noexcept {       \
        return this->InternalQueryInterface(this, _GetEntries(), iid, object);  \
    }                                                                           \
    static const ATL::_ATL_INTMAP_ENTRY* _GetEntries() noexcept {               \
        static const ATL::_ATL_INTMAP_ENTRY entries[] = {
// NOLINTBEGIN(bugprone-macro-parentheses): a type takes none
#define COM_INTERFACE_ENTRY(x)                                       \
    {&__uuidof(x), [](void* object) -> IUnknown* {                   \
         return static_cast<x*>(static_cast<_ComMapClass*>(object)); \
     }},
// NOLINTEND(bugprone-macro-parentheses)
#define END_COM_MAP()                          \
    { nullptr, nullptr }                       \
    }                                          \
    ;                                          \
    return entries;                            \
    }                                          \
    STDMETHOD_(ULONG, AddRef)() override = 0;  \
    STDMETHOD_(ULONG, Release)() override = 0; \
    STDMETHOD(QueryInterface)(REFIID iid, void** object) override = 0;

// Keeps an object alive while its FinalConstruct hands out references to it.
#define DECLARE_PROTECT_FINAL_CONSTRUCT()                                    \
    void InternalFinalConstructAddRef() noexcept { this->InternalAddRef(); } \
    void InternalFinalConstructRelease() noexcept { this->InternalRelease(); }

namespace ATL {

// Gets the class's creator through SetVoid.
class CComClassFactory : public IClassFactory, public CComObjectRootEx<CComGlobalsThreadModel> {
public:
    BEGIN_COM_MAP(CComClassFactory)
    COM_INTERFACE_ENTRY(IClassFactory)
    END_COM_MAP()

    STDMETHOD(CreateInstance)(IUnknown* outer, REFIID iid, void** object) override {
        if (object == nullptr) return E_POINTER;
        *object = nullptr;
        // COM: an aggregated object must be asked for its own IUnknown first.
        if (outer != nullptr && !InlineIsEqualGUID(iid, IID_IUnknown)) return CLASS_E_NOAGGREGATION;
        return m_pfnCreateInstance(outer, iid, object);
    }
    STDMETHOD(LockServer)(BOOL lock) override {
        if (lock != FALSE)
            _pAtlModule->Lock();
        else
            _pAtlModule->Unlock();
        return S_OK;
    }

    void SetVoid(void* creator) noexcept {
        m_pfnCreateInstance = reinterpret_cast<_ATL_CREATORFUNC*>(creator);
    }

private:
    _ATL_CREATORFUNC* m_pfnCreateInstance = nullptr;
};

// Names the creators of a class's objects and of its class object.
template <class T, const CLSID* pclsid>
class CComCoClass {
public:
    using _ClassFactoryCreatorClass = CComCreator<CComObjectCached<CComClassFactory> >;
    using _CreatorClass =
        CComCreator2<CComCreator<CComObject<T> >, CComCreator<CComAggObject<T> > >;
};

}  // namespace ATL

#endif
