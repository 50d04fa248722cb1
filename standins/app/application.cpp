#include "standins/app/application.h"

#include "common/messages/frame.h"
#include "standins/app/report_lines.h"

namespace orvane::standin::app {
namespace {

constexpr const wchar_t* kInstanceMutex = L"OrVaneApp_Process";
constexpr int kLookAfterMs = 20;

enum ExitCode { good = 0, checkMissed = 1, wrongUsage = 2, noPipes = 3 };

}  // namespace

int StandInApplication::run() {
    if (m_options.transcript != juce::File()) {
        m_transcript = std::make_unique<juce::FileOutputStream>(m_options.transcript);
        // Emptied, not made anew: somebody may be following it.
        if (!m_transcript->setPosition(0) || m_transcript->truncate().failed()) {
            m_transcript.reset();
            print("error: cannot write " + m_options.transcript.getFullPathName(), true);
            return wrongUsage;
        }
    }
    if (UniqueHandle(OpenMutexW(SYNCHRONIZE, FALSE, kInstanceMutex))) {
        print("another OrVaneApp is running already; this one ends", true);
        return good;
    }
    for (const PipeId pipe : {PipeId::event, PipeId::command}) {
        if (pipeOf(pipe).keepOpen()) continue;
        print(String("error: cannot make the pipe ") + systemName(pipe) +
                  "; another program may have made it: end that one first",
              true);
        return noPipes;
    }
    // After the pipes: a plug-in that finds the mutex expects both.
    m_instance.reset(CreateMutexW(nullptr, FALSE, kInstanceMutex));
    m_keeper = std::jthread([this](const std::stop_token& stop) {
        for (; !stop.stop_requested(); juce::Thread::sleep(kLookAfterMs)) {
            m_events.keepOpen();
            m_commands.keepOpen();
        }
    });
    const String& player = m_options.launchedBy;
    print("ready: both pipes are open" +
              (player.isEmpty() ? String() : ", launched by " + onOneLine(player, 60)),
          true);
    if (m_options.script == juce::File()) {
        runPrompt();
    } else if (m_options.script.existsAsFile()) {
        m_interpreter.runScript(m_options.script.loadFileAsString(),
                                m_options.script.getFileName());
    } else {
        print("error: cannot read the script " + m_options.script.getFullPathName(), true);
        return wrongUsage;
    }
    return m_interpreter.isGood() ? good : checkMissed;
}

void StandInApplication::runPrompt() {
    if (m_terminal.isInteractive())
        print("'help' lists the words, TAB completes, 'quit' ends", true);
    while (const auto line = m_terminal.readLine()) {
        m_interpreter.run(*line);
        if (m_interpreter.hasQuit()) return;
    }
    // When the plug-in started this program there may be no input: it still serves the pipes.
    while (m_options.launchedBy.isNotEmpty()) juce::Thread::sleep(60'000);
}

bool StandInApplication::send(const OrvaneMessage& message) {
    if (m_options.record != juce::File())
        record(PipeId::command, "plug-in", frame::encode(message.toPayload()));
    return m_commands.send(message);
}

// Each pipe's frames in a file of its own, as they came and went, and a line for each in
// times.jsonl.
void StandInApplication::record(PipeId pipe, const char* to, std::span<const std::uint8_t> frame) {
    const std::lock_guard lock(m_printing);
    const auto file = m_options.record.getChildFile(pipe == PipeId::event ? "event-pipe.bin"
                                                                          : "command-pipe.bin");
    m_options.record.getChildFile("times.jsonl")
        .appendText("{\"ms\":" + String(juce::Time::getMillisecondCounter() - m_begin) +
                        ",\"file\":\"" + file.getFileName() +
                        "\",\"offset\":" + String(file.getSize()) +
                        ",\"bytes\":" + String(frame.size()) + ",\"to\":\"" + to + "\"}\n",
                    false, false, nullptr);
    file.appendData(frame.data(), frame.size());
}

bool StandInApplication::sendBytes(std::span<const std::uint8_t> bytes) {
    return m_commands.hasClient() && m_commands.sendBytes(bytes);
}

void StandInApplication::clientChanged(PipeId pipe, const String& how) {
    print(shownLine("link", describe(pipe), how), true);
    m_arrivals.changed();
}

void StandInApplication::payloadCame(PipeId pipe, std::span<const std::uint8_t> payload) {
    if (m_options.record != juce::File()) record(pipe, "application", frame::encode(payload));
    StringArray problems;
    const MessagePtr message = readPayload(pipe, payload, problems);
    for (const String& problem : problems) {
        print(shownLine("PROBLEM", describe(pipe), problem), true);
        m_interpreter.problemCame();
    }
    if (message == nullptr) return;
    print(shown(*message), true);
    m_arrivals.add(message);
}

void StandInApplication::print(const String& text, bool withTime) {
    const std::lock_guard lock(m_printing);
    const auto now = juce::Time::getCurrentTime();
    String line = text;
    if (withTime)
        line = now.formatted("%H:%M:%S.") + String(now.getMilliseconds()).paddedLeft('0', 3) +
               "  " + text;
    if (m_transcript != nullptr) {
        m_transcript->writeText(line + "\n", false, false, nullptr);
        m_transcript->flush();  // somebody follows the file while we run
    }
    m_terminal.print(line);
}

}  // namespace orvane::standin::app
