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

std::optional<NetworkAddress> ParseAddress(const std::string& text) {
    NetworkAddress address = MappedBegin;
    if (text.find('\0') != std::string::npos || (inet_pton(AF_INET, text.c_str(), &address[MappedBits / 8]) != 1 &&
                                                 inet_pton(AF_INET6, text.c_str(), address.data()) != 1)) {
        return std::nullopt;
    }
    return address;
}

std::optional<Network> Network::Parse(const std::string& text) {
    const std::size_t slash = text.find('/');
    const std::string address = text.substr(0, slash);
    const auto first = ParseAddress(address);
    if (!first) {
        return std::nullopt;
    }
    Network network{};
    network.first = *first;
    network.length = AllBits;
    if (slash != std::string::npos) {
        const unsigned shortest = address.find(':') == std::string::npos ? MappedBits : 0;
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

const std::vector<Network>& LoopbackNetworks() {
    static const std::vector<Network> Networks = ParseNetworks({"127.0.0.0/8", "::1/128"});
    return Networks;
}

bool IsLoopback(const NetworkAddress& address) {
    return Contain(LoopbackNetworks(), address);
}

} // namespace Net
