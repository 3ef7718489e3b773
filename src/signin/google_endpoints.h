#pragma once

// Where Google's services are. The launcher links google_endpoints.cpp, which holds the real hosts; the sandbox and the
// tests link a definition of their own. Nothing at run time can redirect a launcher.

#include <string>

struct GoogleEndpoints {
    std::string authorizationUrl; // scheme, host and path of the consent page, without a query
    std::string tokenHost;
    int tokenPort = 443;
    std::string userInfoHost;
    int userInfoPort = 443;
};

GoogleEndpoints googleEndpoints();
