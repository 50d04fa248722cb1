#pragma once

// The module half of our subset of the Active Template Library: thread models, the map of creatable
// classes and the module behind the four exports of an in-process server.

#include "platform/atl/atlcomcli.h"

#ifdef _MSC_VER
#include <atlbase.h>
#else

#include <atomic>

namespace ATL {

class CComCriticalSection {
public:
    CComCriticalSection() noexcept { ::InitializeCriticalSection(&m_sec); }
    ~CComCriticalSection() { ::DeleteCriticalSection(&m_sec); }
    CComCriticalSection(const CComCriticalSection&) = delete;
    CComCriticalSection& operator=(const CComCriticalSection&) = delete;

    HRESULT Lock() noexcept {
        ::EnterCriticalSection(&m_sec);
        return S_OK;
    }
    HRESULT Unlock() noexcept {
        ::LeaveCriticalSection(&m_sec);
        return S_OK;
    }

    CRITICAL_SECTION m_sec;
};

class CComFakeCriticalSection {
public:
    HRESULT Lock() noexcept { return S_OK; }
    HRESULT Unlock() noexcept { return S_OK; }
};

template <class TLock>
class CComCritSecLock {
public:
    explicit CComCritSecLock(TLock& lock) noexcept : m_lock(lock) { m_lock.Lock(); }
    ~CComCritSecLock() { m_lock.Unlock(); }
    CComCritSecLock(const CComCritSecLock&) = delete;
    CComCritSecLock& operator=(const CComCritSecLock&) = delete;

private:
    TLock& m_lock;
};

// How an object counts: plainly, when one thread does it all, or atomically.
class CComSingleThreadModel {
public:
    static ULONG WINAPI Increment(LONG* value) noexcept { return static_cast<ULONG>(++*value); }
    static ULONG WINAPI Decrement(LONG* value) noexcept { return static_cast<ULONG>(--*value); }
    using CriticalSection = CComFakeCriticalSection;
    using ThreadModelNoCS = CComSingleThreadModel;
};

class CComMultiThreadModelNoCS {
public:
    static ULONG WINAPI Increment(LONG* value) noexcept {
        return static_cast<ULONG>(::InterlockedIncrement(value));
    }
    static ULONG WINAPI Decrement(LONG* value) noexcept {
        return static_cast<ULONG>(::InterlockedDecrement(value));
    }
    using CriticalSection = CComFakeCriticalSection;
    using ThreadModelNoCS = CComMultiThreadModelNoCS;
};

class CComMultiThreadModel : public CComMultiThreadModelNoCS {
public:
    using CriticalSection = CComCriticalSection;
};

using CComGlobalsThreadModel = CComMultiThreadModel;

// Answers E_OUTOFMEMORY, the object's own failure, or what QueryInterface says.
typedef HRESULT(WINAPI _ATL_CREATORFUNC)(void* context, REFIID iid, void** object);

// One creatable class. The module owns one reference to the class object once it exists.
struct _ATL_OBJMAP_ENTRY {
    const CLSID* pclsid;
    HRESULT(WINAPI* pfnUpdateRegistry)(BOOL registering);
    _ATL_CREATORFUNC* pfnGetClassObject;
    _ATL_CREATORFUNC* pfnCreateInstance;
    std::atomic<IUnknown*> pCF{nullptr};
    _ATL_OBJMAP_ENTRY* next = nullptr;
};

// The list of a module's classes. Filled by static constructors, read-only afterwards.
class CAtlComModule {
public:
    void Add(_ATL_OBJMAP_ENTRY& entry) noexcept {
        entry.next = m_first;
        m_first = &entry;
    }
    [[nodiscard]] _ATL_OBJMAP_ENTRY* First() const noexcept { return m_first; }

private:
    _ATL_OBJMAP_ENTRY* m_first = nullptr;
};

inline constinit CAtlComModule _AtlComModule;

class CAtlModule;
inline constinit CAtlModule* _pAtlModule = nullptr;

// Counts what keeps the module in memory. One object per module, made before any COM object.
class CAtlModule {
public:
    CAtlModule() noexcept { _pAtlModule = this; }
    CAtlModule(const CAtlModule&) = delete;
    CAtlModule& operator=(const CAtlModule&) = delete;

    virtual LONG Lock() noexcept { return ++m_nLockCnt; }
    virtual LONG Unlock() noexcept { return --m_nLockCnt; }
    virtual LONG GetLockCount() noexcept { return m_nLockCnt; }

protected:
    virtual ~CAtlModule() {
        if (_pAtlModule == this) _pAtlModule = nullptr;
    }

    CComCriticalSection m_csObjMap;

private:
    std::atomic<LONG> m_nLockCnt{0};
};

// The work behind the exports. T derives from this; exports call its object.
template <class T>
class CAtlDllModuleT : public CAtlModule {
public:
    HRESULT DllCanUnloadNow() noexcept { return GetLockCount() == 0 ? S_OK : S_FALSE; }

    HRESULT DllGetClassObject(REFCLSID clsid, REFIID iid, void** object) noexcept {
        if (object == nullptr) return E_POINTER;
        *object = nullptr;
        for (_ATL_OBJMAP_ENTRY* entry = _AtlComModule.First(); entry; entry = entry->next) {
            if (!InlineIsEqualGUID(*entry->pclsid, clsid)) continue;
            return GetClassObject(*entry, iid, object);
        }
        return CLASS_E_CLASSNOTAVAILABLE;
    }

    HRESULT DllRegisterServer(BOOL /*typeLibrary*/ = TRUE) noexcept { return UpdateRegistry(TRUE); }
    HRESULT DllUnregisterServer(BOOL /*typeLibrary*/ = TRUE) noexcept {
        return UpdateRegistry(FALSE);
    }

    // Lets go of the cached class objects.
    void Term() noexcept {
        for (_ATL_OBJMAP_ENTRY* entry = _AtlComModule.First(); entry; entry = entry->next) {
            IUnknown* const classObject = entry->pCF.exchange(nullptr);
            if (classObject != nullptr) classObject->Release();
        }
    }

private:
    HRESULT GetClassObject(_ATL_OBJMAP_ENTRY& entry, REFIID iid, void** object) noexcept {
        if (entry.pCF.load() == nullptr) {
            const CComCritSecLock<CComCriticalSection> lock(m_csObjMap);
            if (entry.pCF.load() == nullptr) {
                void* created = nullptr;
                const HRESULT result = entry.pfnGetClassObject(
                    reinterpret_cast<void*>(entry.pfnCreateInstance), IID_IUnknown, &created);
                if (FAILED(result)) return result;
                entry.pCF.store(static_cast<IUnknown*>(created));
            }
        }
        return entry.pCF.load()->QueryInterface(iid, object);
    }

    static HRESULT UpdateRegistry(BOOL registering) noexcept {
        for (_ATL_OBJMAP_ENTRY* entry = _AtlComModule.First(); entry; entry = entry->next) {
            const HRESULT result = entry->pfnUpdateRegistry(registering);
            if (FAILED(result)) return result;
        }
        return S_OK;
    }
};

namespace detail {

// First base of whatever counts as "alive" for the module: unlocks only after the object is gone.
class ModuleLock {
public:
    ModuleLock() noexcept { _pAtlModule->Lock(); }
    ~ModuleLock() { _pAtlModule->Unlock(); }
    ModuleLock(const ModuleLock&) = delete;
    ModuleLock& operator=(const ModuleLock&) = delete;
};

struct ObjectMapLink {
    explicit ObjectMapLink(_ATL_OBJMAP_ENTRY& entry) noexcept { _AtlComModule.Add(entry); }
};

}  // namespace detail
}  // namespace ATL

// Puts a class into the module's map. Once per class, in a source file.
#define OBJECT_ENTRY_AUTO(clsid, class)                                                        \
    static ATL::_ATL_OBJMAP_ENTRY objectMapEntry_##class {                                     \
        &(clsid), &class ::UpdateRegistry, &class ::_ClassFactoryCreatorClass::CreateInstance, \
            &class ::_CreatorClass::CreateInstance                                             \
    };                                                                                         \
    static const ATL::detail::ObjectMapLink objectMapLink_##class { objectMapEntry_##class };

#endif
