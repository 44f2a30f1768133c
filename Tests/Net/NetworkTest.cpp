#include "Net/Network.h"

#include "Vor/Exception.h"

#include <arpa/inet.h>

#include <gtest/gtest.h>

namespace Net {
namespace {

NetworkAddress AddressOf(std::string text) {
    if (text.find(':') == std::string::npos) {
        text = "::ffff:" + text;
    }
    NetworkAddress address;
    EXPECT_EQ(inet_pton(AF_INET6, text.c_str(), address.data()), 1) << text;
    return address;
}

bool Contains(const std::string& network, const std::string& address) {
    const auto parsed = Network::Parse(network);
    EXPECT_TRUE(parsed) << network;
    return parsed && parsed->Contains(AddressOf(address));
}

TEST(Network, ContainsTheAddressesWithItsFirstBits) {
    EXPECT_TRUE(Contains("192.168.1.0/24", "192.168.1.0"));
    EXPECT_TRUE(Contains("192.168.1.0/24", "192.168.1.255"));
    EXPECT_FALSE(Contains("192.168.1.0/24", "192.168.2.0"));
    EXPECT_FALSE(Contains("192.168.1.0/24", "192.168.0.255"));
    EXPECT_TRUE(Contains("10.20.48.0/21", "10.20.55.255"));
    EXPECT_FALSE(Contains("10.20.48.0/21", "10.20.56.0"));
    EXPECT_TRUE(Contains("fd00:1::/32", "fd00:1:ffff::1"));
    EXPECT_FALSE(Contains("fd00:1::/32", "fd00:2::1"));
    EXPECT_TRUE(Contains("fe80::/10", "febf::1"));
    EXPECT_FALSE(Contains("fe80::/10", "fec0::1"));
}

TEST(Network, MayBeOneAddress) {
    for (const char* network : {"10.0.0.7", "10.0.0.7/32"}) {
        EXPECT_TRUE(Contains(network, "10.0.0.7"));
        EXPECT_FALSE(Contains(network, "10.0.0.6"));
        EXPECT_FALSE(Contains(network, "10.0.0.8"));
    }
    for (const char* network : {"::1", "::1/128"}) {
        EXPECT_TRUE(Contains(network, "::1"));
        EXPECT_FALSE(Contains(network, "::2"));
        EXPECT_FALSE(Contains(network, "0.0.0.1"));
    }
}

TEST(Network, TakesNoNoticeOfBitsBehindItsLength) {
    EXPECT_TRUE(Contains("192.168.1.77/24", "192.168.1.3"));
    EXPECT_TRUE(Contains("fd00::1/8", "fdff::"));
}

TEST(Network, KeepsIpV4AndIpV6Apart) {
    EXPECT_TRUE(Contains("0.0.0.0/0", "255.255.255.255"));
    EXPECT_FALSE(Contains("0.0.0.0/0", "::1"));
    EXPECT_FALSE(Contains("0.0.0.0/0", "2001:db8::1"));
    EXPECT_TRUE(Contains("::/0", "2001:db8::1"));
    EXPECT_FALSE(Contains("::/0", "127.0.0.1"));
    EXPECT_FALSE(Contains("::/80", "127.0.0.1"));
}

TEST(Network, CountsAMappedAddressAsIpV4) {
    EXPECT_TRUE(Contains("127.0.0.0/8", "::ffff:127.0.0.1"));
    EXPECT_TRUE(Contains("::ffff:10.0.0.0/104", "10.9.8.7"));
    EXPECT_FALSE(Contains("::ffff:10.0.0.0/104", "11.0.0.0"));
}

TEST(Network, RefusesAnyOtherText) {
    for (const char* text : {"",
                             "/",
                             "/8",
                             "10.0.0.0/",
                             "10.0.0.0/33",
                             "10.0.0.0/-1",
                             "10.0.0.0/+8",
                             "10.0.0.0/8 ",
                             " 10.0.0.0/8",
                             "10.0.0.0 /8",
                             "10.0.0.0/8/8",
                             "10.0.0/8",
                             "10.0.0.256",
                             "10.0.0.0/a",
                             "10.0.0.0/4294967304",
                             "::/129",
                             "::1/",
                             ":::/8",
                             "fe80::1%lo/64",
                             "[::1]",
                             "localhost",
                             "10.0.0.0/255.0.0.0",
                             "10.0.0.1:502",
                             "0x7f.0.0.1"}) {
        EXPECT_FALSE(Network::Parse(text)) << text;
    }
    EXPECT_FALSE(Network::Parse(std::string("10.0.0.1\0", 9)));
    EXPECT_FALSE(Network::Parse(std::string("10.0.0.0\0/8", 11)));
}

TEST(Network, NamesTheEntryThatIsNone) {
    try {
        ParseNetworks({"10.0.0.0/8", "the office", "::1"});
        FAIL();
    } catch (const Vor::Exception& e) {
        EXPECT_EQ(e.Status(), yERROR_PARAMETER);
        EXPECT_STREQ(e.what(), "\"the office\" is not a network such as 192.168.1.0/24 or fd00::/8, nor an IP address");
    }
}

TEST(Network, OfAListContainsWhatOneOfThemDoes) {
    const auto networks = ParseNetworks({"10.0.0.0/8", "::1"});
    EXPECT_TRUE(Contain(networks, AddressOf("10.1.2.3")));
    EXPECT_TRUE(Contain(networks, AddressOf("::1")));
    EXPECT_FALSE(Contain(networks, AddressOf("11.1.2.3")));
    EXPECT_FALSE(Contain({}, AddressOf("10.1.2.3")));
}

TEST(Network, ReadsAddressesOfDigitsOnly) {
    EXPECT_EQ(ParseAddress("192.168.1.7"), AddressOf("192.168.1.7"));
    EXPECT_EQ(ParseAddress("fd00::7"), AddressOf("fd00::7"));
    EXPECT_EQ(ParseAddress("::ffff:1.2.3.4"), AddressOf("1.2.3.4"));
    for (const char* text : {"", "localhost", "127.1", "1.2.3.4.5", "1.2.3.4/32", "[::1]", "::1%lo", "127.0.0.1 "}) {
        EXPECT_FALSE(ParseAddress(text)) << text;
    }
    EXPECT_FALSE(ParseAddress(std::string("127.0.0.1\0", 10)));
}

TEST(Network, KnowsTheMachineItself) {
    for (const char* text : {"127.0.0.1", "127.0.0.0", "127.255.255.255", "::1", "::ffff:127.0.0.1"}) {
        EXPECT_TRUE(IsLoopback(AddressOf(text))) << text;
    }
    for (const char* text : {"126.255.255.255", "128.0.0.0", "0.0.0.0", "::", "::2", "1::1", "::127.0.0.1"}) {
        EXPECT_FALSE(IsLoopback(AddressOf(text))) << text;
    }
}

TEST(Network, WritesAddressesAsDigits) {
    for (const char* text : {"192.168.1.7", "127.0.0.1", "fd00::7", "::1", "::"}) {
        EXPECT_EQ(AddressText(AddressOf(text)), text);
    }
}

} // namespace
} // namespace Net
