#include "Net/Network.h"

#include "Vor/Exception.h"

#include <algorithm>
#include <arpa/inet.h>
#include <charconv>
#include <cstring>

namespace Net {

namespace {

constexpr NetworkAddress MappedBegin{0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0xFF, 0xFF};
constexpr unsigned MappedBits = 96;
constexpr unsigned AllBits = 128;

/// Whether the first `bits` bits are the same.
bool BeginAlike(const NetworkAddress& left, const NetworkAddress& right, unsigned bits) {
    const std::size_t whole = bits / 8;
    if (std::memcmp(left.data(), right.data(), whole) != 0) {
        return false;
    }
    const auto mask = static_cast<unsigned char>(0xFF00 >> bits % 8);
    return mask == 0 || ((left[whole] ^ right[whole]) & mask) == 0;
}

bool IsIpV4(const NetworkAddress& address) {
    return BeginAlike(address, MappedBegin, MappedBits);
}

std::optional<unsigned> ParseLength(const std::string& text, unsigned max) {
    unsigned value = 0;
    const char* const end = text.data() + text.size();
    const auto [stop, error] = std::from_chars(text.data(), end, value);
    if (error != std::errc() || stop != end || value > max) {
        return std::nullopt;
    }
    return value;
}

} // namespace

std::string AddressText(const NetworkAddress& address) {
    char text[INET6_ADDRSTRLEN];
    if (IsIpV4(address)) {
        inet_ntop(AF_INET, &address[MappedBits / 8], text, sizeof text);
    } else {
        inet_ntop(AF_INET6, address.data(), text, sizeof text);
    }
    return text;
}

std::optional<Network> Network::Parse(const std::string& text) {
    const std::size_t slash = text.find('/');
    const std::string address = text.substr(0, slash);
    Network network{};
    unsigned shortest = 0;
    if (address.find('\0') != std::string::npos) {
        return std::nullopt;
    }
    if (inet_pton(AF_INET, address.c_str(), &network.first[MappedBits / 8]) == 1) {
        std::copy_n(MappedBegin.begin(), MappedBits / 8, network.first.begin());
        shortest = MappedBits;
    } else if (inet_pton(AF_INET6, address.c_str(), network.first.data()) != 1) {
        return std::nullopt;
    }
    network.length = AllBits;
    if (slash != std::string::npos) {
        const auto length = ParseLength(text.substr(slash + 1), AllBits - shortest);
        if (!length) {
            return std::nullopt;
        }
        network.length = shortest + *length;
    }
    return network;
}

bool Network::Contains(const NetworkAddress& address) const {
    const bool isIpV4 = length >= MappedBits && IsIpV4(first);
    return isIpV4 == IsIpV4(address) && BeginAlike(first, address, length);
}

std::vector<Network> ParseNetworks(const std::vector<std::string>& texts) {
    std::vector<Network> networks;
    for (const std::string& text : texts) {
        const auto network = Network::Parse(text);
        if (!network) {
            Vor::Throw(yERROR_PARAMETER,
                       "\"%s\" is not a network such as 192.168.1.0/24 or fd00::/8, nor an IP address", text);
        }
        networks.push_back(*network);
    }
    return networks;
}

bool Contain(const std::vector<Network>& networks, const NetworkAddress& address) {
    return std::ranges::any_of(networks, [&](const Network& network) { return network.Contains(address); });
}

} // namespace Net
