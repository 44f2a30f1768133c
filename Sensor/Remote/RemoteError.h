#pragma once

#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

namespace Sensor::Remote {

/// A running sensor couldn't be asked, or refused what it was asked for. The text is one sentence.
class RemoteError : public std::runtime_error {
public:
    /// The program's exit status.
    enum Status {
        NoAnswer = 1, ///< nothing answers there, the answer is no sensor's, or the sensor couldn't do it
        Refused = 2   ///< the sensor doesn't do it
    };

    RemoteError(Status status, const std::string& text, std::vector<std::string> places = {})
        : std::runtime_error(text)
        , status(status)
        , places(std::move(places)) {}

    Status ExitStatus() const { return status; }
    /// One line for each place in what was sent, with what is wrong there.
    const std::vector<std::string>& Places() const { return places; }

private:
    Status status;
    std::vector<std::string> places;
};

} // namespace Sensor::Remote
