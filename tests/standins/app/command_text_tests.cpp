#include "standins/app/command_text.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "standins/app/options.h"
#include "standins/app/report_lines.h"
#include "standins/app/text.h"

namespace orvane::standin::app {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;

// A whole line's parameters as they are sent, "key=value|" each, or its error.
std::string sent(const std::string& line) {
    const auto words = splitWords(line);
    if (!words) return words.error;
    const Lookup lookup = findCommand(words.value.at(0));
    if (!lookup.command) return lookupProblem(words.value.at(0), lookup);
    const auto parameters =
        commandParameters(*lookup.command, {words.value.begin() + 1, words.value.end()});
    std::string text = parameters.error;
    for (const auto& [key, value] : parameters.value) text += key + "=" + value + "|";
    return text;
}

TEST(CommandText, MakesParametersOfALineOrSaysWhatToDo) {
    EXPECT_THAT(splitWords(R"(a  "b c"	d="e ""f""" "" C:\x\ )").value,
                ElementsAre("a", "b c", "d=e \"f\"", "", "C:\\x\\"));
    EXPECT_EQ(substitute("start ${t} $5 {x}", {{"t", "C:\\a"}}).value, "start C:\\a $5 {x}");
    const struct {
        const char *line, *sent;
    } cases[] = {
        // In the order they are sent, however they are given.
        {"setMediaInfoToPath Year=1999 emptyOk=YES metadata.TrackTitle=\"My Song\" \"C:\\a=b.wma\"",
         "trackPath=C:\\a=b.wma|albumArtPath=|emptyOk=YES|metadata.Year=1999|"
         "metadata.TrackTitle=My Song|"},
        {"getMediaInfoFromIndex 3", "trackIndex=3|albumArtPath=|"},
        {"addToDirtyFolder playlistName=x trackPaths=a;b trackPaths=c",
         "playlistName=x|trackPaths0=a|trackPaths1=b|trackPaths2=c|"},
        // A name with a semicolon in it can be given by its own key.
        {"addToDirtyFolder trackPaths0=a;b", "playlistName=|trackPaths0=a;b|"},
        {"a \"b", "quote is not closed"},
        {"START", "needs trackPath="},  // not startCurrent
        {"getT", ""},
        {"addTo x", "addToCleanedFolder, addToNotFoundFolder"},
        {"isPlayign", "did you mean isPlaying"},
        {"xyzzyplugh", "'help'"},
        {"getMediaInfoFromIndex abc", "must be a number"},
        {"setMediaInfoToIndex 1 emptyOk=1", "yes or no"},
        {"start trackPaht=a", "it takes trackPath"},
        {"pause now", "one value too many"},
    };
    for (const auto& one : cases) EXPECT_THAT(sent(one.line), HasSubstr(one.sent)) << one.line;
}

TEST(CommandText, CompletesNamesAndParameters) {
    EXPECT_EQ(complete("addtoc").line, "addToCleanedFolder ");
    EXPECT_EQ(complete("is").candidates.size(), 6u);
    EXPECT_EQ(complete("start tr").line, "start trackPath=");
    EXPECT_EQ(complete("setMediaInfoToIndex trackIndex=1 TrackT").line,
              "setMediaInfoToIndex trackIndex=1 TrackTitle=");
    EXPECT_EQ(complete("help pau").line, "help pause ");
    EXPECT_EQ(complete("nonsense x").line, "nonsense x");
    EXPECT_EQ(std::ranges::count_if(commandCatalogue(), &CommandForm::sent), 23);
}

TEST(Text, StandsHostileInput) {
    for (const auto& [pattern, text] : {std::pair{"a*c*", "abbcd"}, {"*", ""}, {"*.w", "x.w"}})
        EXPECT_TRUE(matches(pattern, text)) << pattern;
    for (const auto& [pattern, text] : {std::pair{"a*a", "a"}, {"abc", "abcd"}, {"*bc*bc", "abc"}})
        EXPECT_FALSE(matches(pattern, text)) << pattern;
    EXPECT_EQ(firstInvalidUtf8("caf\xC3\xA9 \xF0\x9F\x8E\xB5"), std::string_view::npos);
    for (const char* bad : {"ab\xC3", "ab\xC0\x80", "ab\xED\xA0\x80", "ab\xF4\x90\x80\x80",
                            "ab\xE0\x9F\x80", "ab\x80", "ab\xFF", "ab\xE2\x82"})
        EXPECT_EQ(firstInvalidUtf8(bad), 2u) << hexBytes(bad);
    EXPECT_EQ(onOneLine("a\r\nb\x01"), "a\\r\\nb\\x01");
    EXPECT_EQ(onOneLine(std::string(10'000'000, 'x'), 3), "xxx... (10000000 characters)");
    EXPECT_EQ(fitted("d\xC3\xA9j\xC3\xA0 vu", 6), "d\xC3\xA9j\xC3\xA0..");
}

TEST(ReportLines, ShowAnEventOnOneLineAndAMapBelow) {
    const auto show = [](Message::Kind kind, const char* name, Parameters parameters) {
        Arrival arrival;
        arrival.message = {kind, name, std::move(parameters)};
        return shown(arrival);
    };
    const auto event = Message::Kind::event;
    EXPECT_THAT(show(event, "PlayerMaximized", {{"PlayerRect", "-4,-8,1936,1056"}}),
                HasSubstr("PlayerRect=-4,-8,1936,1056 (1936x1056 at -4,-8)"));
    EXPECT_THAT(show(event, "PlayerMaximized", {{"PlayerRect", "1,2,3"}}),
                HasSubstr("not left,top,width,height"));
    Parameters tracks;
    for (int i = 0; i < 20'000; ++i)
        tracks.emplace_back("trackPaths" + std::to_string(i), "C:\\x.wma");
    EXPECT_LT(show(event, "CleanTracks", tracks).size(), 300u);
    EXPECT_THAT(show(event, "CleanTracks", tracks), HasSubstr("19997 more of 20000 tracks"));
    EXPECT_THAT(
        show(Message::Kind::response, "getMediaInfoFromPath",
             {{"return_value", "true"}, {"metadataOut.Year", "2004"}, {"metadataOut.OVID", ""}}),
        testing::AllOf(HasSubstr("true\n"), HasSubstr("Year          2004"),
                       HasSubstr("empty: OVID")));
}

TEST(Options, ComeFromTheCommandLineBeforeTheEnvironment) {
    const auto environment = [](const char* name) {
        return std::string(name) == "ORVANE_APP_SCRIPT" ? "env.txt" : "";
    };
    EXPECT_EQ(readOptions({}, environment).script, "env.txt");
    const Options options = readOptions({"--launched-by=wmp", "--script=a=b.txt"}, environment);
    EXPECT_EQ(options.error, "");
    EXPECT_EQ(options.launchedBy, "wmp");
    EXPECT_EQ(options.script, "a=b.txt");
    EXPECT_THAT(readOptions({"--script"}, environment).error, HasSubstr("--script=FILE"));
    EXPECT_THAT(readOptions({"--quite"}, environment).error, HasSubstr("--help"));
}

}  // namespace
}  // namespace orvane::standin::app
