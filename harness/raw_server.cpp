#include "harness/raw_server.h"

#include <sddl.h>

#include <algorithm>

namespace orvane::test {

std::wstring pipePath(const juce::String& name) {
    return ("\\\\.\\pipe\\" + name).toWideCharPointer();
}

bool RawServer::reopen(const char* security) {
    UniqueLocalMemory descriptor;
    if (security != nullptr)
        ConvertStringSecurityDescriptorToSecurityDescriptorA(security, SDDL_REVISION_1,
                                                             descriptor.put(), nullptr);
    SECURITY_ATTRIBUTES attributes{sizeof attributes, descriptor.get(), FALSE};
    m_pipe.reset();
    m_pipe.reset(CreateNamedPipeW(
        m_name.c_str(), PIPE_ACCESS_DUPLEX | FILE_FLAG_FIRST_PIPE_INSTANCE,
        PIPE_TYPE_BYTE | PIPE_READMODE_BYTE | PIPE_WAIT, 1, 64, 64, 0, &attributes));
    return static_cast<bool>(m_pipe);
}

bool RawServer::accept() {
    return ConnectNamedPipe(m_pipe.get(), nullptr) || GetLastError() == ERROR_PIPE_CONNECTED;
}

bool RawServer::hasClient() const {
    return PeekNamedPipe(m_pipe.get(), nullptr, 0, nullptr, nullptr, nullptr) != FALSE;
}

bool RawServer::write(const Bytes& bytes) {
    DWORD written = 0;
    return WriteFile(m_pipe.get(), bytes.data(), static_cast<DWORD>(bytes.size()), &written,
                     nullptr) &&
           written == bytes.size();
}

Bytes RawServer::read(std::size_t count) {
    Bytes bytes(count);
    std::size_t filled = 0;
    DWORD got = 0;
    while (filled < count && ReadFile(m_pipe.get(), bytes.data() + filled,
                                      static_cast<DWORD>(count - filled), &got, nullptr))
        filled += got;
    bytes.resize(filled);
    return bytes;
}

Bytes RawServer::readPayload() {
    const Bytes bytes = read(frame::kHeaderSize);
    frame::Header header{};
    if (bytes.size() < header.size()) return {};
    std::copy(bytes.begin(), bytes.end(), header.begin());
    return read(frame::decodeHeader(header).value_or(0));
}

void RawServer::closeAfterReading() {
    FlushFileBuffers(m_pipe.get());
    close();
}

Squatter::Squatter(const juce::String& name, Way way)
    : m_path(pipePath(name)), m_thread([this, name, way] { serve(name, way); }) {}

Squatter::~Squatter() {
    // It may be waiting for a client: one comes from here.
    for (m_stop = true; !m_stopped; Sleep(10))
        const UniqueFile client(
            CreateFileW(m_path.c_str(), GENERIC_READ, 0, nullptr, OPEN_EXISTING, 0, nullptr));
    m_thread.join();
}

void Squatter::serve(const juce::String& name, Way way) {
    for (RawServer server(name); !m_stop; server.reopen()) {
        if (!server.accept() || m_stop) continue;
        ++clients;
        while (way != Way::closesAtOnce && !m_stop && server.hasClient()) {
            Sleep(5);
            if (way == Way::writesGarbage) server.write(Bytes(4001, 0x9E));
        }
    }
    m_stopped = true;
}

}  // namespace orvane::test
