// libFuzzer: what Header::parse accepts can be written, and what was written is read as the same.

#include <cstdlib>
#include <span>
#include <string>

#include "standins/asf/asf_file.h"
#include "standins/asf/picture.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using orvane::asf::Header;
    std::string error;
    const auto header = Header::parse({data, size}, error);
    if (header.has_value() != error.empty()) std::abort();
    if (!header) return 0;
    for (const auto& attribute : header->attributes()) {
        (void)attribute.text();
        (void)orvane::asf::Picture::parse(attribute.value);
    }
    const auto written = header->serialise(0, error);
    if (!written) std::abort();
    const auto again = Header::parse(*written, error);
    if (!again || again->attributes().size() != header->attributes().size()) std::abort();
    if (again->serialise(0, error) != written) std::abort();
    return 0;
}
