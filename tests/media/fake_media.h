#pragma once

#include <windows.h>

#include <map>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "standins/player/media_base.h"

namespace orvane::test {

// A media item of a player in memory: attributes in a map, every write written down, each call
// made to fail on demand. Lives on the stack.
class FakeMedia final : public standin::MediaBase {
public:
    std::wstring sourcePath = L"C:\\Music\\track.wma";
    bool sourcePathFails = false;
    bool offersMedia3 = true;
    std::map<std::wstring, std::wstring> attributes;
    std::set<std::wstring> unreadable;
    std::set<std::wstring> severalValues;  // the map has the first one
    std::vector<std::pair<std::wstring, std::wstring>> writes;

    // Whether every reference that was taken has been given back.
    bool isLeftAlone() {
        AddRef();
        return Release() == 1;
    }

    STDMETHOD(get_sourceURL)(BSTR* out) override {
        return sourcePathFails ? E_FAIL : standin::giveText(sourcePath, out);
    }
    STDMETHOD(getItemInfo)(BSTR name, BSTR* out) override {
        if (unreadable.contains(name)) return E_FAIL;
        return standin::giveText(attributes.contains(name) ? attributes[name] : L"", out);
    }
    STDMETHOD(getAttributeCountByType)(BSTR name, BSTR, LONG* out) override {
        *out = severalValues.contains(name) ? 2 : 1;
        return S_OK;
    }
    STDMETHOD(setItemInfo)(BSTR name, BSTR value) override {
        attributes[name] = value;
        writes.emplace_back(name, value);
        return S_OK;
    }

protected:
    void* find(REFIID iid) override {
        if (iid == __uuidof(IWMPMedia3) && !offersMedia3) return nullptr;
        return match<IUnknown, IWMPMedia, IWMPMedia3>(iid, static_cast<IWMPMedia3*>(this));
    }
};

}  // namespace orvane::test
