#pragma once

// Includes the sandbox's TLS server for tests. In tests, a script chooses each byte of a response.

#include "sandbox/http_message.h" // IWYU pragma: export
#include "sandbox/tls_server.h"   // IWYU pragma: export
