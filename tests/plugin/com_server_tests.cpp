// The class object, the lock count, aggregation and what the object answers to QueryInterface.

#include <gtest/gtest.h>

#include <algorithm>
#include <array>

#include "tests/plugin/plugin_fixture.h"

namespace orvane::test {
namespace {

using ComServerTest = PluginTest;

TEST_F(ComServerTest, ClassObjectsOfOtherClassesAndInterfacesAreRefused) {
    void* object = &object;
    EXPECT_EQ(getClassObject(CLSID_NULL, IID_IClassFactory, &object), CLASS_E_CLASSNOTAVAILABLE);
    EXPECT_EQ(object, nullptr);
    EXPECT_EQ(getClassObject(CLSID_OrVaneWmpPlugin, IID_IClassFactory, nullptr), E_POINTER);
    object = &object;
    EXPECT_EQ(getClassObject(CLSID_OrVaneWmpPlugin, IID_IDispatch, &object), E_NOINTERFACE);
    EXPECT_EQ(object, nullptr);
    EXPECT_EQ(create<IWMPEvents>(nullptr), E_POINTER);
}

TEST_F(ComServerTest, SeveralThreadsGetTheSameClassObject) {
    endServer();  // as when it was never asked for
    std::array<CComPtr<IUnknown>, 8> answers;
    std::vector<std::thread> threads;
    threads.reserve(answers.size());
    for (auto& answer : answers)
        threads.emplace_back([&] {
            EXPECT_EQ(getClassObject(CLSID_OrVaneWmpPlugin, IID_IUnknown,
                                     reinterpret_cast<void**>(&answer)),
                      S_OK);
        });
    for (auto& thread : threads) thread.join();
    ASSERT_NE(answers[0], nullptr);
    EXPECT_EQ(std::count(answers.begin(), answers.end(), answers[0]), 8);
}

TEST_F(ComServerTest, TheObjectHasTwoInterfacesAndKeepsTheModule) {
    ASSERT_NO_FATAL_FAILURE(open());
    EXPECT_EQ(canUnloadNow(), S_FALSE);
    EXPECT_EQ(classFactory()->LockServer(TRUE), S_OK);
    EXPECT_TRUE(m_plugin.IsEqualObject(sink()));
    for (const IID& iid : {IID_IDispatch, IID_IClassFactory, __uuidof(IWMPCore)}) {
        void* other = &other;
        EXPECT_EQ(m_plugin->QueryInterface(iid, &other), E_NOINTERFACE);
        EXPECT_EQ(other, nullptr);
    }
    m_plugin.Release();
    EXPECT_EQ(canUnloadNow(), S_FALSE) << "the lock";
    EXPECT_EQ(classFactory()->LockServer(FALSE), S_OK);
    EXPECT_EQ(canUnloadNow(), S_OK);
}

#pragma GCC diagnostic ignored "-Wnon-virtual-dtor"  // by design: COM objects end in Release

// An outer object that lends its IUnknown to the plug-in.
class Outer : public IUnknown {
public:
    LONG references = 1;
    CComPtr<IUnknown> inner;

    virtual ~Outer() = default;
    STDMETHOD(QueryInterface)(REFIID iid, void** object) override {
        if (!IsEqualGUID(iid, IID_IUnknown)) return inner->QueryInterface(iid, object);
        *object = static_cast<IUnknown*>(this);
        AddRef();
        return S_OK;
    }
    STDMETHOD_(ULONG, AddRef)() override { return static_cast<ULONG>(++references); }
    STDMETHOD_(ULONG, Release)() override { return static_cast<ULONG>(--references); }
};

TEST_F(ComServerTest, AnAggregatedObjectHasTheOuterObjectsIdentity) {
    ASSERT_NO_FATAL_FAILURE(open());
    m_plugin.Release();
    Outer outer;
    EXPECT_EQ(create(&m_plugin, &outer), CLASS_E_NOAGGREGATION);
    m_app->closePipes();
    EXPECT_EQ(create(&outer.inner, &outer), E_FAIL);
    EXPECT_EQ(outer.references, 1);
    m_app->openPipes();

    ASSERT_EQ(create(&outer.inner, &outer), S_OK);
    ASSERT_EQ(outer.inner.QueryInterface(&m_plugin), S_OK);
    EXPECT_EQ(outer.references, 2);
    EXPECT_TRUE(m_plugin.IsEqualObject(&outer));

    // The player's subscription finds the events through the outer object.
    EXPECT_EQ(m_plugin->SetCore(m_player->core()), S_OK);
    EXPECT_EQ(outer.references, 3);
    EXPECT_EQ(m_plugin->SetCore(nullptr), S_OK);
    EXPECT_EQ(outer.references, 2);
    m_plugin.Release();
    EXPECT_EQ(outer.references, 1);
    EXPECT_EQ(canUnloadNow(), S_FALSE);
    outer.inner.Release();
    EXPECT_FALSE(m_window->isHooked());
}

}  // namespace
}  // namespace orvane::test
