#include "standins/app/command_text.h"

#include "standins/app/options.h"
#include "standins/app/report_lines.h"
#include "standins/app/text.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace orvane::standin::app {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::Pair;

// A whole line's parameters as they are sent, or its error.
Parsed<Parameters> parsed(const std::string& line) {
    const auto words = splitWords(line);
    EXPECT_TRUE(words) << words.error;
    const Lookup lookup = findCommand(words.value.at(0));
    EXPECT_TRUE(lookup.command) << line;
    return commandParameters(*lookup.command, {words.value.begin() + 1, words.value.end()});
}

TEST(CommandText, SplitsWordsAndKeepsPaths) {
    EXPECT_THAT(splitWords(R"(a  "b c"	d="e ""f""" "" C:\x\ )").value,
                ElementsAre("a", "b c", "d=e \"f\"", "", "C:\\x\\"));
    EXPECT_THAT(splitWords("a \"b").error, HasSubstr("quote is not closed"));
}

TEST(CommandText, PutsParametersInTheirOrderHoweverTheyAreGiven) {
    EXPECT_THAT(parsed("setMediaInfoToPath Year=1999 emptyOk=YES "
                       "metadata.TrackTitle=\"My Song\" \"C:\\a=b.wma\"")
                    .value,
                ElementsAre(Pair("trackPath", "C:\\a=b.wma"), Pair("albumArtPath", ""),
                            Pair("emptyOk", "YES"), Pair("metadata.Year", "1999"),
                            Pair("metadata.TrackTitle", "My Song")));
    EXPECT_THAT(parsed("getMediaInfoFromIndex 3").value,
                ElementsAre(Pair("trackIndex", "3"), Pair("albumArtPath", "")));
}

TEST(CommandText, NumbersListElements) {
    EXPECT_THAT(parsed("addToDirtyFolder playlistName=x trackPaths=a;b trackPaths=c").value,
                ElementsAre(Pair("playlistName", "x"), Pair("trackPaths0", "a"),
                            Pair("trackPaths1", "b"), Pair("trackPaths2", "c")));
    // A name with a semicolon in it can be given by its own key.
    EXPECT_THAT(parsed("addToDirtyFolder trackPaths0=a;b").value,
                ElementsAre(Pair("playlistName", ""), Pair("trackPaths0", "a;b")));
}

TEST(CommandText, SaysWhatToDoAboutWrongParameters) {
    EXPECT_THAT(parsed("start").error, HasSubstr("needs trackPath="));
    EXPECT_THAT(parsed("getMediaInfoFromIndex abc").error, HasSubstr("must be a number"));
    EXPECT_THAT(parsed("setMediaInfoToIndex 1 emptyOk=1").error, HasSubstr("yes or no"));
    EXPECT_THAT(parsed("start trackPaht=a").error, HasSubstr("it takes trackPath"));
    EXPECT_THAT(parsed("pause now").error, HasSubstr("one value too many"));
}

TEST(CommandText, PutsVariablesIn) {
    EXPECT_EQ(substitute("start ${t} cost $5 {x}", {{"t", "C:\\a"}}).value,
              "start C:\\a cost $5 {x}");
    EXPECT_THAT(substitute("start ${u}", {}).error, HasSubstr("${u}"));
}

TEST(Catalogue, HasTheCommandsThatArePassedOn) {
    std::size_t sent = 0;
    for (const CommandForm& command : commandCatalogue()) {
        sent += command.sent ? 1u : 0u;
        EXPECT_EQ(findCommand(command.name).command, &command) << command.name;
    }
    EXPECT_EQ(sent, 23u);
}

TEST(Catalogue, TakesABeginningAndOffersCandidates) {
    EXPECT_STREQ(findCommand("getT").command->name, "getTrackCount");
    EXPECT_STREQ(findCommand("START").command->name, "start");  // not startCurrent
    const Lookup open = findCommand("addTo");
    EXPECT_EQ(open.command, nullptr);
    EXPECT_THAT(lookupProblem("addTo", open), HasSubstr("addToCleanedFolder, addToNotFoundFolder"));
    EXPECT_THAT(lookupProblem("isPlayign", findCommand("isPlayign")),
                HasSubstr("did you mean isPlaying"));
    EXPECT_THAT(lookupProblem("xyzzyplugh", findCommand("xyzzyplugh")), HasSubstr("'help'"));
}

TEST(Catalogue, CompletesNamesAndParameters) {
    EXPECT_EQ(complete("getTr").line, "getTrackCount ");
    EXPECT_EQ(complete("addtoc").line, "addToCleanedFolder ");
    EXPECT_EQ(complete("is").candidates.size(), 6u);
    EXPECT_EQ(complete("start tr").line, "start trackPath=");
    EXPECT_EQ(complete("setMediaInfoToIndex trackIndex=1 TrackT").line,
              "setMediaInfoToIndex trackIndex=1 TrackTitle=");
    EXPECT_EQ(complete("help pau").line, "help pause ");
    EXPECT_EQ(complete("nonsense x").line, "nonsense x");
}

TEST(Text, MatchesPatterns) {
    EXPECT_TRUE(matches("a*c*", "abbcd"));
    EXPECT_TRUE(matches("*", ""));
    EXPECT_TRUE(matches("*.wma", "C:\\x.wma"));
    EXPECT_FALSE(matches("a*a", "a"));
    EXPECT_FALSE(matches("abc", "abcd"));
    EXPECT_FALSE(matches("*bc*bc", "abc"));
}

TEST(Text, FindsTheFirstByteThatIsNotUtf8) {
    EXPECT_EQ(firstInvalidUtf8("caf\xC3\xA9 \xF0\x9F\x8E\xB5"), std::string_view::npos);
    for (const char* bad : {"ab\xC3", "ab\xC0\x80", "ab\xED\xA0\x80", "ab\xF4\x90\x80\x80",
                            "ab\xE0\x9F\x80", "ab\x80", "ab\xFF", "ab\xE2\x82"})
        EXPECT_EQ(firstInvalidUtf8(bad), 2u) << hexBytes(bad);
}

TEST(Text, ShowsHostileTextOnOneShortLine) {
    EXPECT_EQ(onOneLine("a\r\nb\x01"
                        "c"),
              "a\\r\\nb\\x01c");
    const std::string line = onOneLine(std::string(10'000'000, 'x'), 20);
    EXPECT_EQ(line, std::string(20, 'x') + "... (10000000 characters)");
    EXPECT_EQ(fitted("d\xC3\xA9j\xC3\xA0 vu", 9), "d\xC3\xA9j\xC3\xA0 vu  ");
    EXPECT_EQ(fitted("d\xC3\xA9j\xC3\xA0 vu", 6), "d\xC3\xA9j\xC3\xA0..");
}

TEST(ReportLines, ShowAnEventOnOneLineAndAMapBelow) {
    Arrival event;
    event.message = {Message::Kind::event,
                     "PlayerMaximized",
                     {{"Player", "wmp"}, {"PlayerRect", "-4,-8,1936,1056"}}};
    EXPECT_THAT(shown(event), HasSubstr("PlayerRect=-4,-8,1936,1056 (1936x1056 at -4,-8)"));
    event.message.parameters[1].second = "1,2,3";
    EXPECT_THAT(shown(event), HasSubstr("not left,top,width,height"));

    Arrival tracks;
    tracks.message = {Message::Kind::event, "CleanTracks", {{"Player", "wmp"}}};
    for (int i = 0; i < 20'000; ++i)
        tracks.message.parameters.emplace_back("trackPaths" + std::to_string(i), "C:\\x.wma");
    EXPECT_THAT(shown(tracks), HasSubstr("and 19997 more of 20000 tracks"));
    EXPECT_LT(shown(tracks).size(), 300u);

    Arrival response;
    response.message = {
        Message::Kind::response,
        "getMediaInfoFromPath",
        {{"return_value", "true"}, {"metadataOut.Year", "2004"}, {"metadataOut.OVID", ""}}};
    EXPECT_THAT(shown(response), HasSubstr("true\n"));
    EXPECT_THAT(shown(response), HasSubstr("Year          2004"));
    EXPECT_THAT(shown(response), HasSubstr("empty: OVID"));
    response.message.parameters.clear();
    EXPECT_THAT(shown(response), HasSubstr("(no return value)"));
}

TEST(Options, ComeFromTheCommandLineBeforeTheEnvironment) {
    const auto environment = [](const char* name) {
        return std::string(name) == "ORVANE_APP_SCRIPT" ? "env.txt" : "";
    };
    EXPECT_EQ(readOptions({}, environment).script, "env.txt");
    const Options options =
        readOptions({"--launched-by=wmp", "--script=a=b.txt", "--quiet"}, environment);
    EXPECT_EQ(options.error, "");
    EXPECT_EQ(options.launchedBy, "wmp");
    EXPECT_EQ(options.script, "a=b.txt");
    EXPECT_TRUE(options.quiet);
    EXPECT_THAT(readOptions({"--script"}, environment).error, HasSubstr("--script=FILE"));
    EXPECT_THAT(readOptions({"--quite"}, environment).error, HasSubstr("--help"));
}

}  // namespace
}  // namespace orvane::standin::app
