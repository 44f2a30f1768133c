#pragma once

#include <array>
#include <optional>
#include <string>
#include <vector>

namespace Net {

/// An IPv6 address, or an IPv4 address mapped to IPv6, ::ffff:A.B.C.D.
using NetworkAddress = std::array<unsigned char, 16>;

/// The address as digits: "192.168.1.7" or "fd00::7".
std::string AddressText(const NetworkAddress& address);
/// The address of "A.B.C.D" or of an IPv6 address as digits. Nothing for any other text.
std::optional<NetworkAddress> ParseAddress(const std::string& text);

/// The addresses that begin with the same bits. Networks of IPv4 and of IPv6 have no address in common.
class Network {
public:
    /// "A.B.C.D/n", "X::/n" or one address; bits after the first n are ignored. Nothing for any other text.
    static std::optional<Network> Parse(const std::string& text);

    bool Contains(const NetworkAddress& address) const;

private:
    NetworkAddress first{};
    unsigned length = 0; ///< bits
};

/// Throws yERROR_PARAMETER, with a text for the user that names the entry, when an entry isn't a network.
std::vector<Network> ParseNetworks(const std::vector<std::string>& texts);

/// Whether one of the networks contains the address.
bool Contain(const std::vector<Network>& networks, const NetworkAddress& address);

/// The addresses by which a machine reaches itself: 127.0.0.0/8 and ::1.
const std::vector<Network>& LoopbackNetworks();
bool IsLoopback(const NetworkAddress& address);

} // namespace Net
