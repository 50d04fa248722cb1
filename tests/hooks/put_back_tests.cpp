// Our window procedure, back in a window after the hook has gone.

#include <gtest/gtest.h>

#include <memory>
#include <optional>

#include "hooks/window_hook.h"
#include "tests/support/test_window.h"

namespace orvane {
namespace {

using test::TestWindow;

constexpr UINT kAsked = WM_APP + 1;
constexpr LRESULT kAnswer = 42;

class CountingHook final : public WindowHook {
public:
    bool OnMessage(HWND, UINT message, WPARAM, LPARAM) override {
        if (message == kAsked) ++seen;
        return true;
    }
    int seen = 0;
};

class AnsweringWindow : public TestWindow {
public:
    AnsweringWindow() {
        onMessage = [](UINT message, WPARAM, LPARAM) -> std::optional<LRESULT> {
            if (message != kAsked) return std::nullopt;
            return kAnswer;
        };
    }
};

WNDPROC setProc(HWND window, WNDPROC proc) {
    return reinterpret_cast<WNDPROC>(
        SetWindowLongW(window, GWL_WNDPROC, static_cast<LONG>(reinterpret_cast<LONG_PTR>(proc))));
}

WNDPROC beneath = nullptr;
LRESULT CALLBACK another(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
    return CallWindowProcW(beneath, window, message, wParam, lParam);
}

// Hooks the window once; our procedure.
WNDPROC hookOnce(HWND window) {
    CountingHook hook;
    EXPECT_TRUE(hook.InstallHook(window));
    return reinterpret_cast<WNDPROC>(GetWindowLongW(window, GWL_WNDPROC));
}

TEST(ProcedurePutBack, PassesMessagesOnWhereItWasAndAnswersNothingElsewhere) {
    AnsweringWindow window;
    const WNDPROC ours = hookOnce(window.hwnd());
    setProc(window.hwnd(), ours);
    EXPECT_EQ(window.send(kAsked), kAnswer);

    AnsweringWindow never;
    setProc(never.hwnd(), ours);
    EXPECT_EQ(never.send(kAsked), 0);
    setProc(never.hwnd(), &DefWindowProcW);  // for its end
}

TEST(ProcedurePutBack, MayBeHookedAgain) {
    AnsweringWindow window;
    setProc(window.hwnd(), hookOnce(window.hwnd()));
    {
        CountingHook hook;
        ASSERT_TRUE(hook.InstallHook(window.hwnd()));
        EXPECT_EQ(window.send(kAsked), kAnswer);
        EXPECT_EQ(hook.seen, 1);
    }
    EXPECT_TRUE(window.hasOwnProcedure());
}

TEST(ProcedurePutBack, MayLieBelowAnotherSubclasserOfAWindowHookedAgain) {
    AnsweringWindow window;
    auto first = std::make_unique<CountingHook>();
    ASSERT_TRUE(first->InstallHook(window.hwnd()));
    beneath = setProc(window.hwnd(), &another);
    first.reset();                     // takes the other one out of the window as well
    setProc(window.hwnd(), &another);  // which comes back, with our procedure below it
    EXPECT_EQ(window.send(kAsked), kAnswer);

    CountingHook second;
    ASSERT_TRUE(second.InstallHook(window.hwnd()));
    EXPECT_EQ(window.send(kAsked), kAnswer);
    EXPECT_EQ(second.seen, 1);
    second.RemoveHook();
    EXPECT_EQ(window.send(kAsked), kAnswer);
    window.destroy();
}

}  // namespace
}  // namespace orvane
