#include "signin/google_endpoints.h"

GoogleEndpoints googleEndpoints() {
    return {"https://accounts.google.com/o/oauth2/v2/auth", "oauth2.googleapis.com", 443,
            "openidconnect.googleapis.com", 443};
}
