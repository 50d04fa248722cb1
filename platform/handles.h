#pragma once

// One owning type per kind of Windows handle. "None" differs between kinds (null for an event or a
// mutex, INVALID_HANDLE_VALUE for a file), so each kind is a type of its own. Handles are moved,
// never copied, and closed by the destructor. A failed close is not reported.

#include <windows.h>

#include <utility>

namespace orvane {

template <typename Traits>
class BasicHandle {
public:
    using Type = typename Traits::Type;

    BasicHandle() = default;
    explicit BasicHandle(Type handle) noexcept : m_handle(handle) {}
    BasicHandle(BasicHandle&& other) noexcept : m_handle(other.release()) {}
    BasicHandle& operator=(BasicHandle&& other) noexcept {
        if (this != &other) reset(other.release());
        return *this;
    }
    BasicHandle(const BasicHandle&) = delete;
    BasicHandle& operator=(const BasicHandle&) = delete;
    ~BasicHandle() { reset(); }

    [[nodiscard]] Type get() const noexcept { return m_handle; }
    [[nodiscard]] explicit operator bool() const noexcept { return m_handle != Traits::none(); }

    // Closes the present handle and takes ownership of `handle`. Preserves the thread's last error.
    void reset(Type handle = Traits::none()) noexcept {
        const Type old = std::exchange(m_handle, handle);
        if (old == Traits::none()) return;
        const DWORD lastError = GetLastError();
        Traits::close(old);
        SetLastError(lastError);
    }

    // Gives up ownership: the caller closes the handle.
    [[nodiscard]] Type release() noexcept { return std::exchange(m_handle, Traits::none()); }

    // For calls that return a handle through a pointer. Closes the present handle first.
    [[nodiscard]] Type* put() noexcept {
        reset();
        return &m_handle;
    }

private:
    Type m_handle = Traits::none();
};

// Events, mutexes, threads, processes: CreateEvent and similar calls return null on failure.
struct KernelObjectTraits {
    using Type = HANDLE;
    static Type none() noexcept { return nullptr; }
    static void close(Type handle) noexcept { CloseHandle(handle); }
};

// Files and pipes: CreateFile and CreateNamedPipe return INVALID_HANDLE_VALUE on failure.
struct FileTraits {
    using Type = HANDLE;
    static Type none() noexcept { return INVALID_HANDLE_VALUE; }
    static void close(Type handle) noexcept { CloseHandle(handle); }
};

// A reference to a loaded module: LoadLibrary, GetModuleHandleEx.
struct ModuleTraits {
    using Type = HMODULE;
    static Type none() noexcept { return nullptr; }
    static void close(Type handle) noexcept { FreeLibrary(handle); }
};

struct RegKeyTraits {
    using Type = HKEY;
    static Type none() noexcept { return nullptr; }
    static void close(Type handle) noexcept { RegCloseKey(handle); }
};

// Memory that a Windows call allocated with LocalAlloc: FormatMessage, SDDL conversion.
struct LocalMemoryTraits {
    using Type = void*;
    static Type none() noexcept { return nullptr; }
    static void close(Type memory) noexcept { LocalFree(memory); }
};

using UniqueHandle = BasicHandle<KernelObjectTraits>;
using UniqueFile = BasicHandle<FileTraits>;
using UniqueModule = BasicHandle<ModuleTraits>;
using UniqueRegKey = BasicHandle<RegKeyTraits>;
using UniqueLocalMemory = BasicHandle<LocalMemoryTraits>;

}  // namespace orvane
