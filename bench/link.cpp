#include <windows.h>

#include <atomic>
#include <memory>
#include <thread>
#include <vector>

#include "bench/rows.h"
#include "bench/samples.h"
#include "common/link/orvane_app_connector.h"
#include "common/messages/frame.h"
#include "common/messages/orvane_message.h"
#include "common/names/names.h"
#include "harness/raw_server.h"
#include "harness/recording_methods.h"
#include "platform/handles.h"

namespace orvane::bench {
namespace {

using test::Bytes;

constexpr int kRounds = 20;
constexpr Turns kTurns{.blocks = 8, .samples = 32};
constexpr const char* kBarePipe = "OrvaneBenchBarePipe";

// One overlapped end of a pipe, by bare calls.
class End {
public:
    // Makes the pipe as the application does.
    static End made(const char* name) {
        return End(CreateNamedPipeW(test::pipePath(name).c_str(),
                                    PIPE_ACCESS_DUPLEX | FILE_FLAG_OVERLAPPED,
                                    PIPE_TYPE_BYTE | PIPE_READMODE_BYTE, 1, 64, 64, 0, nullptr));
    }
    static End opened(const char* name) {
        return End(CreateFileW(test::pipePath(name).c_str(), GENERIC_READ | GENERIC_WRITE, 0,
                               nullptr, OPEN_EXISTING, FILE_FLAG_OVERLAPPED, nullptr));
    }

    [[nodiscard]] bool write(const Bytes& bytes) {
        return finish(WriteFile(m_pipe.get(), bytes.data(), static_cast<DWORD>(bytes.size()),
                                nullptr, &m_overlapped)) == bytes.size();
    }
    // Whole when as much as `bytes` holds has come.
    [[nodiscard]] bool read(Bytes& bytes) {
        for (std::size_t filled = 0; filled < bytes.size();) {
            const DWORD got =
                finish(ReadFile(m_pipe.get(), bytes.data() + filled,
                                static_cast<DWORD>(bytes.size() - filled), nullptr, &m_overlapped));
            if (got == 0) return false;
            filled += got;
        }
        return true;
    }

private:
    explicit End(HANDLE pipe) : m_pipe(pipe) {
        require(static_cast<bool>(m_pipe), "a pipe is taken; end the application first");
        m_overlapped.hEvent = m_event.get();
    }

    DWORD finish(BOOL answer) {
        DWORD count = 0;
        if (!answer && GetLastError() != ERROR_IO_PENDING) return 0;
        return GetOverlappedResult(m_pipe.get(), &m_overlapped, &count, TRUE) ? count : 0;
    }

    UniqueFile m_pipe;
    UniqueHandle m_event{CreateEventW(nullptr, TRUE, FALSE, nullptr)};
    OVERLAPPED m_overlapped{};
};

Bytes frameOf(const OrvaneMessage& message) { return frame::encode(message.toPayload()); }

void measureRoundTrip(End& commands, Comparison& row) {
    const OrvaneCommand command("isPlaying");
    const Bytes request = frameOf(command);
    OrvaneResponse expected(command.getName());
    expected.setReturnValue(false);
    const Bytes response = frameOf(expected);

    End server = End::made(kBarePipe);
    End client = End::opened(kBarePipe);
    std::thread echo([&] {
        Bytes taken(request.size());
        while (client.read(taken) && taken == request && client.write(response)) {
        }
    });
    const auto exchange = [&](End& end) {
        Bytes answer(response.size());
        require(end.write(request) && end.read(answer) && answer == response, "a wrong answer");
    };
    row.round({"`isPlaying` over the command pipe", [&] { exchange(commands); }},
              {"ping-pong of the same bytes", [&] { exchange(server); }}, kTurns);
    static_cast<void>(server.write(Bytes(request.size())));
    echo.join();
}

void measureEvent(OrvaneAppConnector& connector, End& events, Comparison& row) {
    OrvaneEvent event("PlayStopped");
    event.setValue("Player", "wmp");
    const Bytes frame = frameOf(event);

    End server = End::made(kBarePipe);
    End client = End::opened(kBarePipe);
    std::atomic<unsigned> taken{0};
    const auto readAll = [&](End& end) {
        return std::thread([&] {
            Bytes bytes(frame.size());
            while (end.read(bytes) && bytes == frame) ++taken;
        });
    };
    std::thread ourReader = readAll(events);
    std::thread bareReader = readAll(server);
    unsigned written = 0;
    const auto settle = [&] {
        for (++written; taken < written;) Sleep(0);
    };
    row.round({"an event on the player's thread", [&] { connector.playStopped("wmp"); }, settle},
              {"a write of the same bytes", [&] { require(client.write(frame), "a write failed"); },
               settle},
              kTurns);
    Bytes end(frame.size());
    static_cast<void>(client.write(end));
    bareReader.join();
    OrvaneEvent last("PlayPaused.");  // another text of the same length ends the reader
    last.setValue("Player", "wmp");
    connector.postEvent(last);
    ourReader.join();
}

}  // namespace

void measureLink() {
    Comparison roundTrips;
    Comparison written;
    for (int i = 0; i < kRounds; ++i) {
        End events = End::made(names::kEventPipe.narrow());
        End commands = End::made(names::kCommandPipe.narrow());
        const auto methods = std::make_shared<test::RecordingMethods>();
        methods->answer = false;
        OrvaneAppConnector connector(methods);
        require(connector.connect(), "the connector does not connect");
        measureRoundTrip(commands, roundTrips);
        measureEvent(connector, events, written);
    }
    roundTrips.print();
    written.print();
}

}  // namespace orvane::bench
