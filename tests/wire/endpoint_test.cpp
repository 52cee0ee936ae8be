// HOST:PORT, read and written.
#include "wire/endpoint.h"

#include <gtest/gtest.h>

namespace tavmir::wire
{

TEST(Endpoint, IsReadAndWrittenBack)
{
    const struct {
        const char* text;
        const char* host;
        int port;
    } good[] = {
        {"127.0.0.1:502", "127.0.0.1", 502},       {"plc-7.example:1", "plc-7.example", 1},
        {"localhost:65535", "localhost", 65535},   {"[::1]:5020", "::1", 5020},
        {"[fe80::1%eth0]:80", "fe80::1%eth0", 80}, {"x:0", "x", 0},
    };
    for (const auto& row : good) {
        Endpoint endpoint;
        EXPECT_TRUE(parseEndpoint(row.text, 0, endpoint)) << row.text;
        EXPECT_EQ(row.host, endpoint.host);
        EXPECT_EQ(row.port, endpoint.port);
        EXPECT_EQ(row.text, endpointText(endpoint.host, endpoint.port));
    }
}

TEST(Endpoint, PortZeroIsForThoseWhoTakeAnyFreeOne)
{
    Endpoint endpoint;
    EXPECT_FALSE(parseEndpoint("host:0", 1, endpoint));
    EXPECT_FALSE(parseEndpoint("[::1]:0", 1, endpoint));
    EXPECT_TRUE(parseEndpoint("host:1", 1, endpoint));
    EXPECT_TRUE(parseEndpoint("host:0", 0, endpoint));
}

TEST(Endpoint, PortsAreDigitsUpTo65535)
{
    for (const char* port :
         {"", "65536", "99999999999999999999", "-1", "+1", " 1", "1 ", "0x1", "1.0", "http"}) {
        Endpoint endpoint;
        EXPECT_FALSE(parseEndpoint("host:" + std::string(port), 0, endpoint)) << port;
    }
    Endpoint endpoint;
    EXPECT_TRUE(parseEndpoint("host:00502", 0, endpoint));
    EXPECT_EQ(502, endpoint.port);
}

TEST(Endpoint, AnIPv6AddressStandsInBracketsAndNothingElseDoes)
{
    for (const char* text : {"::1:80", "fe80::1:2:80", "[::1:80", "::1]:80", "[]:80", "[::1]",
                             "[::1]80", "[[::1]]:80", "[host]:80", "[127.0.0.1]:80", "a[b:1"}) {
        Endpoint endpoint;
        EXPECT_FALSE(parseEndpoint(text, 0, endpoint)) << text;
    }
}

TEST(Endpoint, WhatIsRefusedChangesNothing)
{
    Endpoint endpoint;
    endpoint.host = "before";
    endpoint.port = 7;
    for (const char* text : {"", ":", ":80", "host", "host:", "host:x"}) {
        EXPECT_FALSE(parseEndpoint(text, 0, endpoint)) << text;
        EXPECT_EQ("before", endpoint.host);
        EXPECT_EQ(7, endpoint.port);
    }
}

} // namespace tavmir::wire
