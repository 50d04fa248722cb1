#include "common/messages/orvane_message.h"

#include <algorithm>
#include <array>
#include <cwchar>
#include <exception>
#include <limits>
#include <string_view>

#include "common/messages/plugin_methods.h"
#include "util/log/log.h"

namespace orvane {
namespace {

using Methods = IOrvanePluginMethods;
using Handler = void (*)(const OrvaneCommand&, Methods&, OrvaneResponse&);

struct Entry {
    std::string_view name;
    Handler handler;
};

juce::StringArray listOf(const OrvaneCommand& command, const char* prefix) {
    juce::StringArray list;
    command.getList(prefix, list);
    return list;
}

// Text without digits is 0, and what follows digits is ignored; `isWhole` tells whether all of the
// text was a number.
int trackIndexOf(const OrvaneCommand& command, bool* isWhole = nullptr) {
    const juce::String value = command.getValue("trackIndex");
    const wchar_t* const text = value.toWideCharPointer();
    wchar_t* end = nullptr;
    const long number = std::wcstol(text, &end, 10);
    if (isWhole != nullptr) *isWhole = end != text && *end == 0;
    return static_cast<int>(
        std::clamp<long>(number, std::numeric_limits<int>::min(), std::numeric_limits<int>::max()));
}

template <bool (Methods::*operation)()>
void ask(const OrvaneCommand&, Methods& methods, OrvaneResponse& response) {
    response.setReturnValue((methods.*operation)());
}

template <bool (Methods::*operation)(const juce::String&, const juce::StringArray&)>
void addToFolder(const OrvaneCommand& command, Methods& methods, OrvaneResponse& response) {
    response.setReturnValue(
        (methods.*operation)(command.getValue("playlistName"), listOf(command, "trackPaths")));
}

void answerMetadata(bool result, const juce::StringPairArray& metadata, OrvaneResponse& response) {
    response.setReturnValue(result);
    if (result) response.addMap("metadataOut", metadata);
}

void getCurrentMediaInfo(const OrvaneCommand&, Methods& methods, OrvaneResponse& response) {
    juce::StringPairArray metadata;
    const bool result = methods.getCurrentMediaInfo(metadata);
    answerMetadata(result, metadata, response);
}

void getMediaInfoFromPath(const OrvaneCommand& command, Methods& methods,
                          OrvaneResponse& response) {
    juce::StringPairArray metadata;
    const bool result = methods.getMediaInfoFromPath(command.getValue("trackPath"), metadata,
                                                     command.getValue("albumArtPath"));
    answerMetadata(result, metadata, response);
}

void getMediaInfoFromIndex(const OrvaneCommand& command, Methods& methods,
                           OrvaneResponse& response) {
    juce::StringPairArray metadata;
    const bool result = methods.getMediaInfoFromIndex(trackIndexOf(command), metadata,
                                                      command.getValue("albumArtPath"));
    answerMetadata(result, metadata, response);
}

struct MediaInfo {
    juce::StringPairArray metadata;
    juce::String albumArtPath;
    bool emptyOk;

    explicit MediaInfo(const OrvaneCommand& command)
        : albumArtPath(command.getValue("albumArtPath")),
          emptyOk(command.getValue("emptyOk").equalsIgnoreCase("yes")) {
        command.getMap("metadata", metadata);
    }
    [[nodiscard]] bool hasAnything() const {
        return metadata.size() > 0 || albumArtPath.isNotEmpty();
    }
};

void setMediaInfoToPath(const OrvaneCommand& command, Methods& methods, OrvaneResponse& response) {
    const MediaInfo info(command);
    if (!info.hasAnything()) return;
    response.setReturnValue(methods.setMediaInfoToPath(command.getValue("trackPath"), info.metadata,
                                                       info.albumArtPath, info.emptyOk));
}

void setMediaInfoToIndex(const OrvaneCommand& command, Methods& methods, OrvaneResponse& response) {
    const MediaInfo info(command);
    if (!info.hasAnything()) return;
    // An index left out or misspelt is not 0 here: that would write to the library's first track.
    bool isWhole = false;
    const int index = trackIndexOf(command, &isWhole);
    response.setReturnValue(isWhole && methods.setMediaInfoToIndex(
                                           index, info.metadata, info.albumArtPath, info.emptyOk));
}

void start(const OrvaneCommand& command, Methods& methods, OrvaneResponse& response) {
    response.setReturnValue(methods.start(command.getValue("trackPath")));
}

void getTrackCount(const OrvaneCommand&, Methods& methods, OrvaneResponse& response) {
    response.setValue("trackCount", juce::String(methods.getTrackCount()));
    response.setReturnValue(true);
}

void close(const OrvaneCommand&, Methods& methods, OrvaneResponse& response) {
    methods.close();
    response.setReturnValue(true);
}

void sendSelectedTracks(const OrvaneCommand&, Methods& methods, OrvaneResponse& response) {
    syslog(LOG_DEBUG, "%s: received request for selected tracks", "OrvaneCommand::executeCommand");
    response.setReturnValue(methods.sendSelectedTracks());
}

// Sorted by name, for the binary search. The protocol's seven further playlist commands are not
// here on purpose, although the interface has operations of their names: the application gets the
// answer to an unknown command, false.
constexpr std::array kEntries = {
    Entry{"addToCleanedFolder", &addToFolder<&Methods::addToCleanedFolder>},
    Entry{"addToDirtyFolder", &addToFolder<&Methods::addToDirtyFolder>},
    Entry{"addToNotFoundFolder", &addToFolder<&Methods::addToNotFoundFolder>},
    Entry{"close", &close},
    Entry{"createSpecialPlaylistFolders", &ask<&Methods::createSpecialPlaylistFolders>},
    Entry{"getCurrentMediaInfo", &getCurrentMediaInfo},
    Entry{"getMediaInfoFromIndex", &getMediaInfoFromIndex},
    Entry{"getMediaInfoFromPath", &getMediaInfoFromPath},
    Entry{"getTrackCount", &getTrackCount},
    Entry{"isInSpecialMode", &ask<&Methods::isInSpecialMode>},
    Entry{"isPaused", &ask<&Methods::isPaused>},
    Entry{"isPlaying", &ask<&Methods::isPlaying>},
    Entry{"isRepeatAll", &ask<&Methods::isRepeatAll>},
    Entry{"isRepeatTrack", &ask<&Methods::isRepeatTrack>},
    Entry{"isShufflePlay", &ask<&Methods::isShufflePlay>},
    Entry{"pause", &ask<&Methods::pause>},
    Entry{"sendSelectedTracks", &sendSelectedTracks},
    Entry{"setMediaInfoToIndex", &setMediaInfoToIndex},
    Entry{"setMediaInfoToPath", &setMediaInfoToPath},
    Entry{"start", &start},
    Entry{"startCurrent", &ask<&Methods::startCurrent>},
    Entry{"stop", &ask<&Methods::stop>},
    Entry{"supportsRandomTrackAccess", &ask<&Methods::supportsRandomTrackAccess>},
};

static_assert(std::is_sorted(kEntries.begin(), kEntries.end(),
                             [](const Entry& a, const Entry& b) { return a.name < b.name; }));

// A command name may hold any character, so it is compared as it is, without a conversion.
Handler handlerFor(const juce::String& name) {
    const auto found = std::lower_bound(
        kEntries.begin(), kEntries.end(), name,
        [](const Entry& entry, const juce::String& n) { return n.compare(entry.name.data()) > 0; });
    return found != kEntries.end() && name.compare(found->name.data()) == 0 ? found->handler
                                                                            : nullptr;
}

}  // namespace

std::vector<std::string_view> OrvaneCommand::names() {
    std::vector<std::string_view> names;
    names.reserve(std::size(kEntries));
    for (const Entry& entry : kEntries) names.push_back(entry.name);
    return names;
}

OrvaneResponse OrvaneCommand::executeCommand(IOrvanePluginMethods* pluginMethods) const {
    try {
        OrvaneResponse response(getName());
        const Handler handler = pluginMethods == nullptr ? nullptr : handlerFor(getName());
        if (handler == nullptr)
            response.setReturnValue(false);
        else
            handler(*this, *pluginMethods, response);
        return response;
    } catch (const std::exception& e) {
        syslog(LOG_ERR, "%s: the operation ended with an exception: %s",
               "OrvaneCommand::executeCommand", e.what());
    } catch (...) {
        syslog(LOG_ERR, "%s: the operation ended with an exception",
               "OrvaneCommand::executeCommand");
    }
    OrvaneResponse failed(getName());
    failed.setReturnValue(false);
    return failed;
}

}  // namespace orvane
