// The class object, the lock count, aggregation and what the object answers to QueryInterface.

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <thread>

#include "tests/plugin/plugin_fixture.h"

namespace orvane::test {
namespace {

using ComServerTest = PluginTest;

CComPtr<IClassFactory> classFactory() {
    CComPtr<IClassFactory> factory;
    EXPECT_EQ(getClassObject(CLSID_OrVaneWmpPlugin, IID_IClassFactory,
                             reinterpret_cast<void**>(&factory)),
              S_OK);
    return factory;
}

TEST_F(ComServerTest, ClassObjectsOfOtherClassesAndInterfacesAreRefused) {
    void* object = &object;
    EXPECT_EQ(getClassObject(CLSID_NULL, IID_IClassFactory, &object), CLASS_E_CLASSNOTAVAILABLE);
    EXPECT_EQ(object, nullptr);
    EXPECT_EQ(getClassObject(CLSID_OrVaneWmpPlugin, IID_IClassFactory, nullptr), E_POINTER);
    object = &object;
    EXPECT_EQ(getClassObject(CLSID_OrVaneWmpPlugin, IID_IDispatch, &object), E_NOINTERFACE);
    EXPECT_EQ(object, nullptr);
    EXPECT_EQ(classFactory()->CreateInstance(nullptr, __uuidof(IWMPEvents), nullptr), E_POINTER);
    EXPECT_EQ(canUnloadNow(), S_OK);
}

TEST_F(ComServerTest, ThereIsOneClassObjectHoweverManyThreadsAsk) {
    endServer();  // as when it was never asked for
    std::array<IUnknown*, 8> answers{};
    std::array<std::thread, 8> threads;
    for (std::size_t i = 0; i < threads.size(); ++i)
        threads[i] = std::thread([&answers, i] {
            EXPECT_EQ(getClassObject(CLSID_OrVaneWmpPlugin, IID_IUnknown,
                                     reinterpret_cast<void**>(&answers[i])),
                      S_OK);
        });
    for (auto& thread : threads) thread.join();
    ASSERT_NE(answers[0], nullptr);
    EXPECT_EQ(std::count(answers.begin(), answers.end(), answers[0]), 8);
    for (IUnknown* answer : answers) answer->Release();
    EXPECT_EQ(canUnloadNow(), S_OK);
}

TEST_F(ComServerTest, TheObjectHasTwoInterfacesAndKeepsTheModule) {
    auto plugin = createPlugin();
    ASSERT_NE(plugin, nullptr);
    EXPECT_EQ(canUnloadNow(), S_FALSE);
    EXPECT_EQ(classFactory()->LockServer(TRUE), S_OK);
    CComPtr<IWMPEvents> events;
    CComPtr<IUnknown> identity;
    EXPECT_EQ(plugin.QueryInterface(&events), S_OK);
    EXPECT_EQ(events->QueryInterface(IID_IUnknown, reinterpret_cast<void**>(&identity)), S_OK);
    EXPECT_EQ(identity.p, static_cast<IUnknown*>(events.p));
    EXPECT_TRUE(identity.IsEqualObject(plugin));
    for (const IID& iid : {IID_IDispatch, IID_IClassFactory, __uuidof(IWMPCore)}) {
        void* other = &other;
        EXPECT_EQ(plugin->QueryInterface(iid, &other), E_NOINTERFACE);
        EXPECT_EQ(other, nullptr);
    }
    events.Release();
    identity.Release();
    plugin.Release();
    EXPECT_EQ(canUnloadNow(), S_FALSE) << "the lock";
    EXPECT_EQ(classFactory()->LockServer(FALSE), S_OK);
    EXPECT_EQ(canUnloadNow(), S_OK);
}

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

TEST_F(ComServerTest, AggregatedObjectsLeaveIdentityToTheOuterOne) {
    Outer outer;
    void* refused = &refused;
    EXPECT_EQ(create(&outer, __uuidof(IWMPEvents), &refused), CLASS_E_NOAGGREGATION);
    EXPECT_EQ(refused, nullptr);
    m_app->closePipes();
    EXPECT_EQ(create(&outer, IID_IUnknown, &refused), E_FAIL);
    EXPECT_EQ(outer.references, 1);
    m_app->openPipes();

    ASSERT_EQ(create(&outer, IID_IUnknown, reinterpret_cast<void**>(&outer.inner)), S_OK);
    CComPtr<IWMPPluginUI> plugin;
    ASSERT_EQ(outer.inner.QueryInterface(&plugin), S_OK);
    EXPECT_EQ(outer.references, 2);
    EXPECT_TRUE(plugin.IsEqualObject(&outer));

    // The player's subscription finds the events through the outer object.
    FakeCore core;
    EXPECT_EQ(plugin->SetCore(&core), S_OK);
    EXPECT_NE(core.sink, nullptr);
    EXPECT_EQ(plugin->SetCore(nullptr), S_OK);
    EXPECT_EQ(outer.references, 2);

    plugin.Release();
    EXPECT_EQ(outer.references, 1);
    EXPECT_EQ(canUnloadNow(), S_FALSE);
    outer.inner.Release();
    EXPECT_EQ(canUnloadNow(), S_OK);
    EXPECT_FALSE(m_window->isHooked());
}

}  // namespace
}  // namespace orvane::test
