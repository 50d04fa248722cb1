#include "hooks/window_hook.h"

#include <gmock/gmock.h>

#include <memory>
#include <stdexcept>

#include "tests/support/captured_log.h"
#include "tests/support/test_window.h"

namespace orvane {
namespace {

using test::AnsweringWindow;
using test::CapturedLog;
using test::TestWindow;
using testing::ElementsAre;
using testing::HasSubstr;

constexpr UINT kTestMessage = AnsweringWindow::kMessage;
constexpr const wchar_t* kHookProperty = L"window_hook_this_ptr";

class TestHook final : public WindowHook {
public:
    bool OnMessage(HWND, UINT message, WPARAM wParam, LPARAM lParam) override {
        return before ? before(message, wParam, lParam) : true;
    }
    void OnAfterMessage(HWND, UINT message, WPARAM, LPARAM, LRESULT result) override {
        if (after) after(message, result);
    }

    std::function<bool(UINT, WPARAM, LPARAM)> before;
    std::function<void(UINT, LRESULT)> after;
};

TEST(WindowHook, SeesOrDropsMessagesAndRestoresTheWindow) {
    AnsweringWindow window(42);
    {
        TestHook hook;
        std::vector<std::string> seen;
        bool pass = true;
        window.inside = [&] { seen.push_back("window"); };
        hook.before = [&](UINT message, WPARAM wParam, LPARAM lParam) {
            if (message == kTestMessage)
                seen.push_back("before " + std::to_string(wParam + lParam));
            return message != kTestMessage || pass;
        };
        hook.after = [&](UINT message, LRESULT result) {
            if (message == kTestMessage) seen.push_back("after " + std::to_string(result));
        };
        ASSERT_TRUE(hook.InstallHook(window.hwnd()));
        EXPECT_EQ(hook.getHwnd(), window.hwnd());
        EXPECT_EQ(GetPropW(window.hwnd(), kHookProperty), static_cast<WindowHook*>(&hook));
        EXPECT_EQ(window.send(kTestMessage, 4, 2), 42);
        EXPECT_THAT(seen, ElementsAre("before 6", "window", "after 42"));
        pass = false;
        EXPECT_EQ(window.send(kTestMessage, 4, 2), 0);
        EXPECT_EQ(seen.back(), "before 6");
    }
    EXPECT_TRUE(window.hasOwnProcedure());
    EXPECT_EQ(GetPropW(window.hwnd(), kHookProperty), nullptr);
}

TEST(WindowHook, FindsItsWindowByCaptionAndClassAndReleasesThePreviousOne) {
    TestWindow first(L"OrVaneTestFirst", L"Réglages 日本");
    TestWindow second(L"OrVaneTestSecond", L"Other");
    TestHook hook;
    ASSERT_TRUE(hook.InstallHook(L"Réglages 日本", L"OrVaneTestFirst", nullptr));
    EXPECT_EQ(hook.getHwnd(), first.hwnd());

    ASSERT_TRUE(hook.InstallHook(L"Other", L"OrVaneTestSecond", nullptr));
    EXPECT_EQ(hook.getHwnd(), second.hwnd());
    EXPECT_TRUE(first.hasOwnProcedure());

    // A search that fails has released the window before, too.
    CapturedLog log;
    EXPECT_FALSE(hook.InstallHook(L"Réglages", L"日本", nullptr));
    EXPECT_TRUE(second.hasOwnProcedure());
    EXPECT_EQ(hook.getHwnd(), nullptr);
    EXPECT_THAT(log.take(), HasSubstr("WindowHook::InstallHook - can't find window with class "
                                      "'日本' and caption 'Réglages'"));

    EXPECT_FALSE(hook.InstallHook(nullptr, L"OrVaneTestFirst", nullptr));
    EXPECT_FALSE(hook.InstallHook(L"Other", nullptr, nullptr));
    EXPECT_THAT(log.take(), HasSubstr("WindowHook::InstallHook - wrong parameters"));
}

TEST(WindowHook, RefusesAWindowThatItCannotHook) {
    constexpr const char* refusal =
        "WindowHook::InstallHook failed - can't save this pointer into the window";
    CapturedLog log;
    TestHook hook;
    HWND gone = nullptr;
    {
        TestWindow window;
        gone = window.hwnd();
    }
    EXPECT_FALSE(hook.InstallHook(gone));
    EXPECT_THAT(log.take(), HasSubstr(refusal));

    // Belongs to another process, whose own copy of us would follow our pointer.
    EXPECT_FALSE(hook.InstallHook(GetDesktopWindow()));
    EXPECT_EQ(GetPropW(GetDesktopWindow(), kHookProperty), nullptr);
    EXPECT_THAT(log.take(), HasSubstr(refusal));

    // Hooked already: two hooks in a row would call each other for ever.
    AnsweringWindow window(7);
    ASSERT_TRUE(hook.InstallHook(window.hwnd()));
    {
        TestHook another;
        EXPECT_FALSE(another.InstallHook(window.hwnd()));
        EXPECT_THAT(log.take(), HasSubstr(refusal));
    }
    // Nor does a hook that has its window leave it for another one.
    TestWindow other;
    EXPECT_FALSE(hook.InstallHook(other.hwnd()));
    EXPECT_TRUE(other.hasOwnProcedure());
    EXPECT_EQ(window.send(kTestMessage), 7);
    EXPECT_EQ(hook.getHwnd(), window.hwnd());
}

TEST(WindowHook, MayBeDestroyedByItsOwnOperationOrByTheWindow) {
    for (const bool byWindow : {false, true}) {
        AnsweringWindow window(5);
        int after = 0;
        auto hook = std::make_unique<TestHook>();
        hook->after = [&](UINT message, LRESULT) { after += message == kTestMessage ? 1 : 0; };
        if (byWindow)
            window.inside = [&] { hook.reset(); };
        else
            hook->before = [&](UINT message, WPARAM, LPARAM) {
                if (message == kTestMessage) hook.reset();
                return true;
            };
        ASSERT_TRUE(hook->InstallHook(window.hwnd()));
        EXPECT_EQ(window.send(kTestMessage), 5) << "the window still gets its message";
        EXPECT_TRUE(window.hasOwnProcedure());
        EXPECT_EQ(window.reached, 1);
        EXPECT_EQ(after, 0);
    }
}

TEST(WindowHook, AnExceptionDoesNotReachTheWindow) {
    AnsweringWindow window(3);
    TestHook hook;
    hook.before = [](UINT message, WPARAM, LPARAM) -> bool {
        if (message == kTestMessage) throw std::runtime_error("before");
        return true;
    };
    hook.after = [](UINT message, LRESULT) {
        if (message == kTestMessage) throw std::runtime_error("after");
    };
    ASSERT_TRUE(hook.InstallHook(window.hwnd()));
    EXPECT_EQ(window.send(kTestMessage), 3);
}

TEST(WindowHook, EndsWithItsWindow) {
    TestWindow window;
    TestHook hook;
    bool lastSeen = false;
    hook.after = [&](UINT message, LRESULT) { lastSeen = lastSeen || message == WM_NCDESTROY; };
    ASSERT_TRUE(hook.InstallHook(window.hwnd()));
    window.destroy();
    EXPECT_TRUE(lastSeen);
    EXPECT_EQ(hook.getHwnd(), nullptr);
    // Without a window PostMessage would succeed: the message goes to the calling thread.
    EXPECT_FALSE(hook.postMessage(kTestMessage, 0, 0));

    TestWindow next;
    EXPECT_TRUE(hook.InstallHook(next.hwnd()));
}

WNDPROC placeProc(HWND hwnd, WNDPROC proc) {
    return reinterpret_cast<WNDPROC>(
        SetWindowLongW(hwnd, GWL_WNDPROC, static_cast<LONG>(reinterpret_cast<LONG_PTR>(proc))));
}

// Somebody else who subclasses the window.
WNDPROC belowOther = nullptr;
bool otherSwallowsTheEnd = false;
LRESULT CALLBACK otherProc(HWND hwnd, UINT message, WPARAM wParam, LPARAM lParam) {
    if (otherSwallowsTheEnd && message == WM_NCDESTROY) return 0;
    return CallWindowProcW(belowOther, hwnd, message, wParam, lParam);
}

TEST(WindowHook, ToleratesAWindowDestroyedWithoutItsNotice) {
    TestHook hook;
    HWND dead = nullptr;
    {
        TestWindow window;
        dead = window.hwnd();
        ASSERT_TRUE(hook.InstallHook(window.hwnd()));
        belowOther = placeProc(window.hwnd(), &otherProc);
        otherSwallowsTheEnd = true;
    }
    otherSwallowsTheEnd = false;
    EXPECT_EQ(hook.getHwnd(), dead);
    hook.RemoveHook();  // what has the handle now is not ours to change
    EXPECT_EQ(hook.getHwnd(), nullptr);
}

// Our procedure, back in a window after the hook has gone, passes on what comes, where it was.
TEST(ProcedurePutBack, PassesMessagesOnAndMayBeHookedAgain) {
    AnsweringWindow window;
    WNDPROC ours = nullptr;
    {
        TestHook hook;
        ASSERT_TRUE(hook.InstallHook(window.hwnd()));
        ours = reinterpret_cast<WNDPROC>(GetWindowLongW(window.hwnd(), GWL_WNDPROC));
    }
    placeProc(window.hwnd(), ours);
    EXPECT_EQ(window.send(kTestMessage), 42);
    {
        TestHook hook;
        int seen = 0;
        hook.before = [&](UINT message, WPARAM, LPARAM) {
            seen += message == kTestMessage ? 1 : 0;
            return true;
        };
        ASSERT_TRUE(hook.InstallHook(window.hwnd()));
        EXPECT_EQ(window.send(kTestMessage), 42);
        EXPECT_EQ(seen, 1);
    }
    EXPECT_TRUE(window.hasOwnProcedure());

    AnsweringWindow never;
    placeProc(never.hwnd(), ours);
    EXPECT_EQ(never.send(kTestMessage), 0);
    placeProc(never.hwnd(), &DefWindowProcW);  // for its end
}

TEST(ProcedurePutBack, MayLieBelowAnotherSubclasserOfAWindowHookedAgain) {
    AnsweringWindow window;
    TestHook hook;
    ASSERT_TRUE(hook.InstallHook(window.hwnd()));
    belowOther = placeProc(window.hwnd(), &otherProc);
    hook.RemoveHook();  // takes the other one out of the window as well
    EXPECT_TRUE(window.hasOwnProcedure());
    placeProc(window.hwnd(), &otherProc);  // which comes back, with our procedure below it
    EXPECT_EQ(window.send(kTestMessage), 42);

    int seen = 0;
    hook.before = [&](UINT message, WPARAM, LPARAM) {
        seen += message == kTestMessage ? 1 : 0;
        return true;
    };
    ASSERT_TRUE(hook.InstallHook(window.hwnd()));
    EXPECT_EQ(window.send(kTestMessage), 42);
    EXPECT_EQ(seen, 1);
    hook.RemoveHook();
    EXPECT_EQ(window.send(kTestMessage), 42);
    window.destroy();
}

}  // namespace
}  // namespace orvane
