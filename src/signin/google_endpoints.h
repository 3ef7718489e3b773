#pragma once

// Returns the addresses of Google's services. The launcher links google_endpoints.cpp with the real hosts. The sandbox
// and the tests link another definition. No setting can change the addresses at run time. Any thread.

#include <string>

struct GoogleEndpoints {
    std::string authorizationUrl; // scheme, host and path of the consent page, without a query
    std::string tokenHost;
    int tokenPort = 443;
    std::string userInfoHost;
    int userInfoPort = 443;
};

[[nodiscard]] GoogleEndpoints googleEndpoints();
