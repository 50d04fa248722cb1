#include "platform/module_thread.h"

#include <process.h>

#include <memory>
#include <utility>

#include "platform/module.h"

namespace orvane {
namespace {

struct Start {
    std::function<void()> body;
    UniqueModule module;
};

unsigned __stdcall runThread(void* argument) {
    HMODULE module = nullptr;
    {
        const std::unique_ptr<Start> start(static_cast<Start*>(argument));
        module = start->module.release();
        start->body();
    }
    // The C runtime frees its record of the thread when the system tells it of the thread's end.
    FreeLibraryAndExitThread(module, 0);
}

}  // namespace

UniqueHandle startModuleThread(std::function<void()> body) {
    auto start = std::make_unique<Start>();
    start->body = std::move(body);
    start->module.reset(referenceThisModule());
    if (!start->module) return {};
    UniqueHandle thread(
        reinterpret_cast<HANDLE>(_beginthreadex(nullptr, 0, &runThread, start.get(), 0, nullptr)));
    if (thread) static_cast<void>(start.release());  // the new thread owns it
    return thread;
}

}  // namespace orvane
