#include "probe/rules.h"

#include <ocidl.h>

#include <algorithm>
#include <cstdio>

#include "standins/support/wide_text.h"

namespace orvane::probe {

namespace {

using standin::toUtf8;

constexpr DWORD kFileFollowsMs = 5000;

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

Seen withWindow(const Session& session, Seen (*ask)(HWND)) {
    return session.subject.window == nullptr ? notAsked("there is no window")
                                             : ask(session.subject.window);
}
Seen withTrack(Session& session, Seen (*ask)(Session&, IWMPMedia3&)) {
    return session.track ? ask(session, *session.track.p)
                         : notAsked("the library takes no file, or gives no IWMPMedia3 for it");
}
Seen withPlaying(Session& session, Seen (*ask)(Session&)) {
    if (!session.subject.mayPlay || !session.track || !session.controls)
        return notAsked("nothing is played here");
    return ask(session);
}

LONG countOf(IWMPPlaylist* items) {
    LONG count = -1;
    if (items != nullptr) items->get_count(&count);
    return count;
}

LONG valuesOf(IWMPMedia3& media, const wchar_t* attribute) {
    LONG count = -1;
    media.getAttributeCountByType(CComBSTR(attribute), CComBSTR(L""), &count);
    return count;
}

std::wstring valueAt(IWMPMedia3& media, const wchar_t* attribute, LONG index) {
    VARIANT value{};
    media.getItemInfoByType(CComBSTR(attribute), CComBSTR(L""), index, &value);
    const std::wstring text = value.vt == VT_BSTR && value.bstrVal != nullptr ? value.bstrVal : L"";
    VariantClear(&value);
    return text;
}

bool isReadOnly(IWMPMedia3& media, const wchar_t* attribute) {
    VARIANT_BOOL readOnly = VARIANT_FALSE;
    media.isReadOnlyItem(CComBSTR(attribute), &readOnly);
    return readOnly != VARIANT_FALSE;
}

// Whether an attribute that is set is gone with the object that it was set on.
Seen livesWithObject(Session& session, IWMPMedia3& track, const wchar_t* attribute) {
    const HRESULT set = setInfo(&track, attribute, L"7/9");
    const bool kept = infoOf(session.trackAgain(), attribute) == L"7/9";
    const auto values = tagsInFile(session.trackPath(), attribute);
    const bool inFile = std::find(values.begin(), values.end(), L"7/9") != values.end();
    return keeps(!kept && !inFile, "set: " + hex(set) + (kept ? ", in the library" : "") +
                                       (inFile ? ", in the file" : ""));
}

constexpr Rule kRules[] = {
    {"objects-belong-to-a-thread",
     [](Session& s) {
         CComPtr<IUnknown> agile;
         return keeps(FAILED(s.subject.core->QueryInterface(__uuidof(IAgileObject),
                                                            reinterpret_cast<void**>(&agile))));
     }},
    {"events-are-offered",
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
    {"window-class",
     [](Session& s) {
         return withWindow(s, [](HWND window) {
             const std::wstring name = windowText(window, &GetClassNameW);
             return keeps(
                 name == L"WMPlayerApp" && GetAncestor(window, GA_PARENT) == GetDesktopWindow(),
                 quoted(name));
         });
     }},
    {"window-caption",
     [](Session& s) {
         return withWindow(s, [](HWND window) {
             const std::wstring caption = windowText(window, &GetWindowTextW);
             return keeps(caption == L"Windows Media Player" ||
                              caption == L"Windows Media Player Legacy" ||
                              caption == L"Lecteur Windows Media" ||
                              caption == L"Reproductor de Windows Media",
                          quoted(caption));
         });
     }},
    {"window-takes-messages",
     [](Session& s) {
         return withWindow(s, [](HWND window) {
             DWORD_PTR answer = 0;
             return keeps(SendMessageTimeoutW(window, WM_NULL, 0, 0, SMTO_NORMAL, 1000, &answer) !=
                          0);
         });
     }},
    {"auto-rewind-is-on",
     [](Session& s) {
         bool on = false;
         const HRESULT result = getMode(s.settings, L"autoRewind", on);
         return result == E_NOTIMPL ? notAsked("it has no modes") : keeps(on, hex(result));
     }},
    {"modes-are-known",
     [](Session& s) {
         bool on = false;
         const HRESULT shuffle = getMode(s.settings, L"shuffle", on);
         const HRESULT loop = getMode(s.settings, L"loop", on);
         return shuffle == E_NOTIMPL
                    ? notAsked("it has no modes")
                    : keeps(shuffle == S_OK && loop == S_OK, hex(shuffle) + ", " + hex(loop));
     }},
    {"added-file-is-found-by-path",
     [](Session& s) {
         return withTrack(s, [](Session& session, IWMPMedia3&) {
             LONG count = 0;
             const auto found = [&] {
                 count = countOf(session.itemsOf(session.trackPath()));
                 return count == 1;
             };
             return keeps(Session::wait(found, 2000), std::to_string(count) + " found");
         });
     }},
    {"path-is-given-back-as-spelt",
     [](Session& s) {
         return withTrack(s, [](Session& session, IWMPMedia3& track) {
             CComBSTR source;
             track.get_sourceURL(&source);
             return keeps(source && session.trackPath() == source.m_str);
         });
     }},
    {"path-may-be-in-capitals",
     [](Session& s) {
         return withTrack(s, [](Session& session, IWMPMedia3&) {
             std::wstring path = session.trackPath();
             CharUpperBuffW(path.data(), static_cast<DWORD>(path.size()));
             return keeps(countOf(session.itemsOf(path)) == 1);
         });
     }},
    {"library-lists-all-kinds",
     [](Session& s) {
         if (!s.film) return notAsked("the library takes no film");
         const std::wstring type = infoOf(s.film, L"MediaType");
         return keeps(type == L"video" && countOf(s.itemsOf(s.filmPath())) == 1, quoted(type));
     }},
    {"several-values",
     [](Session& s) {
         return withTrack(s, [](Session&, IWMPMedia3& track) {
             const LONG count = valuesOf(track, L"Author");
             const bool first = infoOf(&track, L"Author") == valueAt(track, L"Author", 0);
             const std::wstring second = valueAt(track, L"Author", 1);
             return keeps(count == 2 && first && second == L"Second Artist",
                          std::to_string(count) + " values, the second is " + quoted(second));
         });
     }},
    {"setting-replaces-all-values",
     [](Session& s) {
         return withTrack(s, [](Session&, IWMPMedia3& track) {
             setInfo(&track, L"Author", L"One Artist");
             const LONG count = valuesOf(track, L"Author");
             return keeps(count == 1, std::to_string(count) + " values");
         });
     }},
    {"read-only-attributes",
     [](Session& s) {
         return withTrack(s, [](Session&, IWMPMedia3& track) {
             return keeps(isReadOnly(track, L"Bitrate") && isReadOnly(track, L"MediaType") &&
                          !isReadOnly(track, L"Title"));
         });
     }},
    {"read-only-stays",
     [](Session& s) {
         return withTrack(s, [](Session& session, IWMPMedia3& track) {
             const HRESULT set = setInfo(&track, L"MediaType", L"radio");
             return keeps(infoOf(session.trackAgain(), L"MediaType") != L"radio", hex(set));
         });
     }},
    {"set-is-in-the-library-at-once",
     [](Session& s) {
         return withTrack(s, [](Session& session, IWMPMedia3& track) {
             const HRESULT set = setInfo(&track, L"Title", L"OrVane probe");
             return keeps(infoOf(session.trackAgain(), L"Title") == L"OrVane probe", hex(set));
         });
     }},
    {"file-follows-the-library",
     [](Session& s) {
         return withTrack(s, [](Session& session, IWMPMedia3&) {
             const ULONGLONG start = GetTickCount64();
             const auto there = [&] {
                 const auto titles = tagsInFile(session.trackPath(), L"Title");
                 return !titles.empty() && titles.front() == L"OrVane probe";
             };
             const bool follows = Session::wait(there, kFileFollowsMs);
             return keeps(follows, (follows ? "after " : "not within ") +
                                       std::to_string(GetTickCount64() - start) + " ms");
         });
     }},
    {"release-date-gives-the-year",
     [](Session& s) {
         return withTrack(s, [](Session& session, IWMPMedia3& track) {
             const HRESULT set = setInfo(&track, L"ReleaseDate", L"1/1/1987 04:20:00 PM");
             const std::wstring year = infoOf(session.trackAgain(), L"ReleaseDateYear");
             return keeps(year == L"1987", "set: " + hex(set) + ", the year is " + quoted(year));
         });
     }},
    {"release-date-is-the-librarys-alone",
     [](Session& s) {
         return withTrack(s, [](Session& session, IWMPMedia3&) {
             const auto there = [&] {
                 const auto years = tagsInFile(session.trackPath(), L"WM/Year");
                 return std::find(years.begin(), years.end(), L"1987") != years.end();
             };
             return keeps(!Session::wait(there, 1000));
         });
     }},
    {"part-of-set-is-not-the-librarys",
     [](Session& s) {
         return withTrack(s, [](Session& session, IWMPMedia3& track) {
             return livesWithObject(session, track, L"WM/PartOfSet");
         });
     }},
    {"unknown-attribute-lives-with-its-object",
     [](Session& s) {
         return withTrack(s, [](Session& session, IWMPMedia3& track) {
             return livesWithObject(session, track, L"OrVaneProbe");
         });
     }},
    {"playlist-name-with-colon",
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
    {"plays-within-a-second",
     [](Session& s) {
         return withPlaying(s, [](Session& session) {
             session.subject.core->put_URL(CComBSTR(session.trackPath().c_str()));
             const HRESULT result = session.controls->play();
             WMPPlayState state = wmppsUndefined;
             const bool plays = Session::wait(
                 [&] {
                     session.subject.core->get_playState(&state);
                     return state == wmppsPlaying;
                 },
                 1000);
             return keeps(plays, hex(result) + ", play state " + std::to_string(state));
         });
     }},
    {"stop-keeps-the-file-open",
     [](Session& s) {
         return withPlaying(s, [](Session& session) {
             session.controls->stop();
             static_cast<void>(Session::wait([] { return false; }, 500));
             return keeps(isBusy(session.trackPath()));
         });
     }},
    {"removing-keeps-the-file",
     [](Session& s) {
         return withTrack(s, [](Session& session, IWMPMedia3&) {
             const bool removed = session.remove(session.filmPath());
             return keeps(removed && std::filesystem::exists(session.filmPath()) &&
                          countOf(session.itemsOf(session.filmPath())) == 0);
         });
     }},
};

}  // namespace

std::span<const Rule> rules() { return kRules; }

}  // namespace orvane::probe
