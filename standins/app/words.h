#pragma once

// What a person can type. One table serves running, help, completion and the commands' parameters:
// a new word is a row of it.

#include <span>

#include "standins/app/interpreter.h"

namespace orvane::standin::app {

struct Word {
    const char* name;
    // What follows the name. A command's parameters are read from here: KEY=VALUE each, in the
    // order in which they are sent. [...] may be left out; a value of "N" is a number, "yes|no"
    // one of the two, "A;B" a list; FIELD stands for any of the metadata fields.
    const char* usage;
    const char* help;  // its first line goes into the overview
    // Null: it is a command for the plug-in.
    void (*run)(Interpreter& interpreter, const StringArray& words) = nullptr;
    bool takesWholeLine = false;  // `words` is then one text, not parted at spaces
};

std::span<const Word> allWords();

// By its name or the beginning of it, ignoring case; an exact name wins over longer ones. Throws a
// Failure that tells what to type instead.
const Word& findWord(const String& typed);

// The command that the word names, with the parameters that `words` give: "" and "no" for those
// left out, as the real application sends them. Throws a Failure when a word is wrong or missing.
OrvaneCommand commandFrom(const Word& word, const StringArray& words);

// Adds to an unfinished line what all names or parameters that may follow share. Returns these, or
// nothing when there is at most one.
StringArray complete(String& line);

String helpOverview();
String helpFor(const Word& word);

}  // namespace orvane::standin::app
