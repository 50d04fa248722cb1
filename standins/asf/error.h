#pragma once

#include <exception>
#include <stdexcept>
#include <string>

namespace orvane::asf {

// Why a file or a header cannot be used, as a sentence. Thrown and caught inside this library only.
struct Error : std::runtime_error {
    using std::runtime_error::runtime_error;
};

// What `function` returns. When it throws: an empty result, and a sentence in `error`.
template <typename Function>
auto explained(std::string& error, Function&& function) -> decltype(function()) {
    try {
        return function();
    } catch (const std::runtime_error& thrown) {
        error = thrown.what();
    } catch (const std::exception&) {
        error = "There is not enough memory for the header.";
    }
    return {};
}

}  // namespace orvane::asf
