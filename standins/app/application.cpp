#include "standins/app/application.h"

#include "standins/app/clean_library.h"
#include "standins/app/protocol.h"
#include "standins/app/report_lines.h"
#include "standins/app/text.h"

namespace orvane::standin::app {
namespace {

constexpr const wchar_t* kInstanceMutex = L"OrVaneApp_Process";
constexpr DWORD kWriteLimitMs = 5000;

enum ExitCode { good = 0, checkMissed = 1, wrongUsage = 2, noPipes = 3 };

}  // namespace

void Application::Ear::clientConnected() {
    m_scanner = {};
    m_stalled.clear();
    Arrival arrival;
    arrival.what = Arrival::What::connected;
    arrival.pipe = m_pipe;
    m_owner.arrived(std::move(arrival));
}

void Application::Ear::bytesReceived(std::string_view bytes) { take(m_scanner.feed(bytes)); }

void Application::Ear::clientQuiet() {
    const std::string unfinished = m_scanner.unfinished();
    if (unfinished == m_stalled) return;
    m_stalled = unfinished;
    if (unfinished.empty()) return;
    m_owner.arrived({Arrival::What::problem, m_pipe, {}, "a frame has stopped at " + unfinished});
}

void Application::Ear::clientGone(const std::string& why) {
    take(m_scanner.finish());
    m_owner.arrived({Arrival::What::disconnected, m_pipe, {}, why});
}

void Application::Ear::take(const std::vector<FrameScanner::Found>& found) {
    for (const FrameScanner::Found& one : found) {
        const std::string place = "byte " + std::to_string(one.offset) + ": ";
        if (!one.isFrame) {
            m_owner.arrived({Arrival::What::problem, m_pipe, {}, place + one.text});
            continue;
        }
        Reading reading = readPayload(m_pipe, one.text);
        for (const std::string& problem : reading.problems)
            m_owner.arrived({Arrival::What::problem, m_pipe, {}, "frame at " + place + problem});
        if (reading.message)
            m_owner.arrived({Arrival::What::message, m_pipe, std::move(*reading.message), {}});
    }
}

Application::Application(Options options) : m_options(std::move(options)) {}

Application::~Application() {
    m_arrivals.stop();
    m_commands.reset();
    m_events.reset();
}

int Application::run() {
    if (!openTranscript()) return wrongUsage;
    m_instance.reset(CreateMutexW(nullptr, FALSE, kInstanceMutex));
    if (GetLastError() == ERROR_ALREADY_EXISTS) {
        print(Kind::answer, "another OrVaneApp is running already; this one ends");
        return good;
    }
    if (!openPipes()) return noPipes;
    print(Kind::answer, std::string("ready: both pipes are open") +
                            (m_options.launchedBy.empty()
                                 ? ""
                                 : ", launched by " + onOneLine(m_options.launchedBy, 60)));
    Interpreter interpreter(*this, m_arrivals, *this);
    if (m_options.script.empty()) {
        runPrompt(interpreter);
        return interpreter.checksMissed() == 0 ? good : checkMissed;
    }
    return runScript(interpreter);
}

bool Application::openTranscript() {
    if (m_options.transcript.empty()) return true;
    m_transcript.open(pathFrom(m_options.transcript), std::ios::binary | std::ios::trunc);
    if (m_transcript) return true;
    print(Kind::error, "cannot write the transcript " + m_options.transcript +
                           "; name a file in a folder that exists");
    return false;
}

bool Application::openPipes() {
    std::string error;
    m_events = PipeServer::create(systemName(PipeId::event), m_eventEar, error);
    if (m_events) m_commands = PipeServer::create(systemName(PipeId::command), m_commandEar, error);
    if (m_commands) return true;
    print(Kind::error, error);
    return false;
}

int Application::runScript(Interpreter& interpreter) {
    const std::filesystem::path path = pathFrom(m_options.script);
    const auto text = contentOf(path);
    if (!text) {
        print(Kind::error, "cannot read the script " + m_options.script);
        return wrongUsage;
    }
    return interpreter.runScript(*text, textOf(path.filename())) ? good : checkMissed;
}

void Application::runPrompt(Interpreter& interpreter) {
    if (m_terminal.isInteractive())
        print(Kind::answer, "'help' lists the commands, TAB completes, 'quit' ends");
    while (m_terminal.hasInput()) {
        const auto line = m_terminal.readLine();
        if (!line) break;
        if (interpreter.run(*line) == Interpreter::Outcome::quit) return;
    }
    // Started by the plug-in there may be nobody to type: the pipes are served all the same.
    if (m_options.launchedBy.empty()) return;
    std::size_t place = 0;
    while (
        !m_arrivals.waitFor(place, std::chrono::hours(24), [](const Arrival&) { return false; })) {
    }
}

bool Application::isConnected(PipeId pipe) {
    const PipeServer* of = server(pipe);
    return of && of->isConnected();
}

std::string Application::send(PipeId pipe, std::string_view bytes) {
    PipeServer* of = server(pipe);
    return of ? of->write(bytes, kWriteLimitMs) : "the pipe is not open";
}

void Application::drop(PipeId pipe) {
    if (PipeServer* of = server(pipe)) of->drop();
}

void Application::hold(PipeId pipe, bool held) {
    if (PipeServer* of = server(pipe)) of->hold(held);
}

void Application::arrived(Arrival arrival) {
    print(arrival.what == Arrival::What::problem ? Kind::alert : Kind::traffic, shown(arrival));
    m_arrivals.add(std::move(arrival));
}

void Application::print(Kind kind, const std::string& text) {
    const bool timed = kind == Kind::traffic || kind == Kind::alert || kind == Kind::check;
    std::string line = text;
    while (!line.empty() && line.back() == '\n') line.pop_back();
    if (timed) line = timeNow() + "  " + line;
    if (kind == Kind::error) line = "error: " + line;
    const std::lock_guard lock(m_printing);
    if (m_transcript.is_open()) {
        m_transcript << line << '\n';
        m_transcript.flush();  // somebody follows the file while we run
    }
    if (m_options.quiet && kind == Kind::traffic) return;
    m_terminal.print(line);
}

}  // namespace orvane::standin::app
