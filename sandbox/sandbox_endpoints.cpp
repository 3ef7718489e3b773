// Returns the endpoints of an identity provider on loopback, at the port in an environment variable. The sandbox's
// launcher and the tests link this file. The shipped launcher links google_endpoints.cpp instead.

#include <cstdlib>

#include "signin/google_endpoints.h"

GoogleEndpoints googleEndpoints() {
    // Read the variable in each call, because tests start several providers.
    const char* text = std::getenv("VOLO_SANDBOX_IDENTITY_PORT");
    const int port = text != nullptr ? std::atoi(text) : 0;
    return {"https://127.0.0.1:" + std::to_string(port) + "/o/oauth2/v2/auth", "127.0.0.1", port, "127.0.0.1", port};
}
