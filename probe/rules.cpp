#include <ocidl.h>

#include <algorithm>
#include <cstdio>

#include "probe/session.h"
#include "standins/support/wide_text.h"

namespace orvane::probe {

namespace {

using standin::toUtf8;

constexpr DWORD kFileFollowsMs = 5000;

struct Seen {
    Answer answer = Answer::notAsked;
    std::string what;
};

enum class Needs { nothing, modes, window, track, film, playing };

// Why what a rule needs is not there; null when it is.
const char* missing(const Session& session, Needs needs) {
    bool on = false;
    switch (needs) {
        case Needs::modes:
            return getMode(session.settings, L"loop", on) == E_NOTIMPL ? "it has no modes"
                                                                       : nullptr;
        case Needs::window:
            return session.subject.window == nullptr ? "there is no window" : nullptr;
        case Needs::track:
            return session.track ? nullptr : "the library takes no file, or has no IWMPMedia3";
        case Needs::film:
            return session.film ? nullptr : "the library takes no film";
        case Needs::playing:
            return session.subject.mayPlay && session.track && session.controls
                       ? nullptr
                       : "nothing is played here";
        default:
            return nullptr;
    }
}

struct Rule {
    const char* name;
    Needs needs;
    Seen (*ask)(Session&);
};

Seen keeps(bool documented, std::string what = {}) {
    return {documented ? Answer::asDocumented : Answer::different, std::move(what)};
}
Seen notAsked(const char* why) { return {Answer::notAsked, why}; }

std::string hex(HRESULT result) {
    char text[16];
    std::snprintf(text, sizeof(text), "0x%08lX", static_cast<unsigned long>(result));
    return text;
}
std::string quoted(const std::wstring& text) { return "\"" + toUtf8(text) + "\""; }

std::wstring windowText(HWND window, int(WINAPI* get)(HWND, LPWSTR, int)) {
    wchar_t text[256] = {};
    get(window, text, static_cast<int>(std::size(text)));
    return text;
}

LONG countOf(IWMPPlaylist* items) {
    LONG count = -1;
    if (items != nullptr) items->get_count(&count);
    return count;
}

LONG valuesOf(const Session& s, const wchar_t* attribute) {
    LONG count = -1;
    s.track->getAttributeCountByType(CComBSTR(attribute), CComBSTR(L""), &count);
    return count;
}

std::wstring valueAt(const Session& s, const wchar_t* attribute, LONG index) {
    VARIANT value{};
    s.track->getItemInfoByType(CComBSTR(attribute), CComBSTR(L""), index, &value);
    std::wstring text = value.vt == VT_BSTR && value.bstrVal != nullptr ? value.bstrVal : L"";
    VariantClear(&value);
    return text;
}

bool isReadOnly(const Session& s, const wchar_t* attribute) {
    VARIANT_BOOL readOnly = VARIANT_FALSE;
    s.track->isReadOnlyItem(CComBSTR(attribute), &readOnly);
    return readOnly != VARIANT_FALSE;
}

bool fileHas(const Session& s, const wchar_t* tag, const wchar_t* value) {
    const auto values = tagsInFile(s.trackPath(), tag);
    return std::find(values.begin(), values.end(), value) != values.end();
}

// Whether an attribute that is set is gone with the object that it was set on.
Seen livesWithObject(const Session& s, const wchar_t* attribute) {
    const HRESULT set = setInfo(s.track, attribute, L"7/9");
    const bool kept = infoOf(s.trackAgain(), attribute) == L"7/9";
    const bool inFile = fileHas(s, attribute, L"7/9");
    return keeps(!kept && !inFile, "set: " + hex(set) + (kept ? ", in the library" : "") +
                                       (inFile ? ", in the file" : ""));
}

constexpr Rule kRules[] = {
    {"objects-belong-to-a-thread", Needs::nothing,
     [](Session& s) {
         CComPtr<IUnknown> agile;
         return keeps(FAILED(s.subject.core->QueryInterface(__uuidof(IAgileObject),
                                                            reinterpret_cast<void**>(&agile))));
     }},
    {"events-are-offered", Needs::nothing,
     [](Session& s) {
         CComPtr<IConnectionPointContainer> points;
         CComPtr<IConnectionPoint> point;
         s.subject.core->QueryInterface(__uuidof(IConnectionPointContainer),
                                        reinterpret_cast<void**>(&points));
         if (!points) return notAsked("there are no connection points");
         const HRESULT found = points->FindConnectionPoint(__uuidof(IWMPEvents), &point);
         if (!point && SUCCEEDED(points->FindConnectionPoint(__uuidof(_WMPOCXEvents), &point)))
             return notAsked("it is an embedded player object, which has the events for scripts");
         return keeps(SUCCEEDED(found) && point, hex(found));
     }},
    {"window-class", Needs::window,
     [](Session& s) {
         const std::wstring name = windowText(s.subject.window, &GetClassNameW);
         return keeps(name == L"WMPlayerApp" &&
                          GetAncestor(s.subject.window, GA_PARENT) == GetDesktopWindow(),
                      quoted(name));
     }},
    {"window-caption", Needs::window,
     [](Session& s) {
         const std::wstring caption = windowText(s.subject.window, &GetWindowTextW);
         return keeps(
             caption == L"Windows Media Player" || caption == L"Windows Media Player Legacy" ||
                 caption == L"Lecteur Windows Media" || caption == L"Reproductor de Windows Media",
             quoted(caption));
     }},
    {"window-takes-messages", Needs::window,
     [](Session& s) {
         DWORD_PTR answer = 0;
         return keeps(
             SendMessageTimeoutW(s.subject.window, WM_NULL, 0, 0, SMTO_NORMAL, 1000, &answer) != 0);
     }},
    {"auto-rewind-is-on", Needs::modes,
     [](Session& s) {
         bool on = false;
         const HRESULT result = getMode(s.settings, L"autoRewind", on);
         return keeps(on, hex(result));
     }},
    {"modes-are-known", Needs::modes,
     [](Session& s) {
         bool on = false;
         const HRESULT shuffle = getMode(s.settings, L"shuffle", on);
         const HRESULT loop = getMode(s.settings, L"loop", on);
         return keeps(shuffle == S_OK && loop == S_OK, hex(shuffle) + ", " + hex(loop));
     }},
    {"added-file-is-found-by-path", Needs::track,
     [](Session& s) {
         LONG count = 0;
         const auto found = [&] {
             count = countOf(s.itemsOf(s.trackPath()));
             return count == 1;
         };
         return keeps(Session::wait(found, 2000), std::to_string(count) + " found");
     }},
    {"path-is-given-back-as-spelt", Needs::track,
     [](Session& s) {
         CComBSTR source;
         s.track->get_sourceURL(&source);
         return keeps(source && s.trackPath() == source.m_str);
     }},
    {"path-may-be-in-capitals", Needs::track,
     [](Session& s) {
         std::wstring path = s.trackPath();
         CharUpperBuffW(path.data(), static_cast<DWORD>(path.size()));
         return keeps(countOf(s.itemsOf(path)) == 1);
     }},
    {"library-lists-all-kinds", Needs::film,
     [](Session& s) {
         const std::wstring type = infoOf(s.film, L"MediaType");
         return keeps(type == L"video" && countOf(s.itemsOf(s.filmPath())) == 1, quoted(type));
     }},
    {"several-values", Needs::track,
     [](Session& s) {
         const LONG count = valuesOf(s, L"Author");
         const bool first = infoOf(s.track, L"Author") == valueAt(s, L"Author", 0);
         const std::wstring second = valueAt(s, L"Author", 1);
         return keeps(count == 2 && first && second == L"Second Artist",
                      std::to_string(count) + " values, the second is " + quoted(second));
     }},
    {"setting-replaces-all-values", Needs::track,
     [](Session& s) {
         setInfo(s.track, L"Author", L"One Artist");
         const LONG count = valuesOf(s, L"Author");
         return keeps(count == 1, std::to_string(count) + " values");
     }},
    {"read-only-attributes", Needs::track,
     [](Session& s) {
         return keeps(isReadOnly(s, L"Bitrate") && isReadOnly(s, L"MediaType") &&
                      !isReadOnly(s, L"Title"));
     }},
    {"read-only-stays", Needs::track,
     [](Session& s) {
         const HRESULT set = setInfo(s.track, L"MediaType", L"radio");
         return keeps(infoOf(s.trackAgain(), L"MediaType") != L"radio", hex(set));
     }},
    {"set-is-in-the-library-at-once", Needs::track,
     [](Session& s) {
         const HRESULT set = setInfo(s.track, L"Title", L"OrVane probe");
         return keeps(infoOf(s.trackAgain(), L"Title") == L"OrVane probe", hex(set));
     }},
    {"file-follows-the-library", Needs::track,
     [](Session& s) {
         const ULONGLONG start = GetTickCount64();
         const bool follows =
             Session::wait([&] { return fileHas(s, L"Title", L"OrVane probe"); }, kFileFollowsMs);
         return keeps(follows, (follows ? "after " : "not within ") +
                                   std::to_string(GetTickCount64() - start) + " ms");
     }},
    {"release-date-gives-the-year", Needs::track,
     [](Session& s) {
         const HRESULT set = setInfo(s.track, L"ReleaseDate", L"1/1/1987 04:20:00 PM");
         const std::wstring year = infoOf(s.trackAgain(), L"ReleaseDateYear");
         return keeps(year == L"1987", "set: " + hex(set) + ", the year is " + quoted(year));
     }},
    {"release-date-is-the-librarys-alone", Needs::track,
     [](Session& s) {
         return keeps(!Session::wait([&] { return fileHas(s, L"WM/Year", L"1987"); }, 1000));
     }},
    {"part-of-set-is-not-the-librarys", Needs::track,
     [](Session& s) { return livesWithObject(s, L"WM/PartOfSet"); }},
    {"unknown-attribute-lives-with-its-object", Needs::track,
     [](Session& s) { return livesWithObject(s, L"OrVaneProbe"); }},
    {"playlist-name-with-colon", Needs::nothing,
     [](Session& s) {
         CComPtr<IWMPPlaylistCollection> playlists;
         s.subject.core->get_playlistCollection(&playlists);
         if (!playlists) return notAsked("there are no playlists");
         CComPtr<IWMPPlaylist> made;
         const CComBSTR name(L"OrVane:Probe");
         const HRESULT result = playlists->newPlaylist(name, &made);
         if (result == E_NOTIMPL) return notAsked("no playlist can be made");
         CComPtr<IWMPPlaylistArray> found;
         LONG count = 0;
         if (SUCCEEDED(playlists->getByName(name, &found)) && found) found->get_count(&count);
         if (made) playlists->remove(made);
         return keeps(made && count == 1, hex(result) + ", " + std::to_string(count) + " found");
     }},
    {"plays-within-a-second", Needs::playing,
     [](Session& s) {
         s.subject.core->put_URL(CComBSTR(s.trackPath().c_str()));
         const HRESULT result = s.controls->play();
         WMPPlayState state = wmppsUndefined;
         const bool plays = Session::wait(
             [&] {
                 s.subject.core->get_playState(&state);
                 return state == wmppsPlaying;
             },
             1000);
         return keeps(plays, hex(result) + ", play state " + std::to_string(state));
     }},
    {"stop-keeps-the-file-open", Needs::playing,
     [](Session& s) {
         s.controls->stop();
         static_cast<void>(Session::wait([] { return false; }, 500));
         return keeps(isBusy(s.trackPath()));
     }},
    {"removing-keeps-the-file", Needs::film,
     [](Session& s) {
         const bool removed = s.remove(s.filmPath());
         return keeps(removed && std::filesystem::exists(s.filmPath()) &&
                      countOf(s.itemsOf(s.filmPath())) == 0);
     }},
};

}  // namespace

std::vector<std::string> ruleNames() {
    std::vector<std::string> names;
    for (const Rule& rule : kRules) names.emplace_back(rule.name);
    return names;
}

std::vector<Finding> ask(const Subject& subject) {
    std::vector<Finding> findings;
    Session session(subject);
    for (const Rule& rule : kRules) {
        const char* const why = missing(session, rule.needs);
        const Seen seen = why != nullptr ? notAsked(why) : rule.ask(session);
        findings.push_back({rule.name, seen.answer, seen.what});
    }
    return findings;
}

std::string describe(const Finding& finding) {
    const char* const answers[] = {"as documented", "different", "could not be asked"};
    const std::string seen = finding.seen.empty() ? "" : ": " + finding.seen;
    return finding.rule + ": " + answers[static_cast<int>(finding.answer)] + seen;
}

}  // namespace orvane::probe
