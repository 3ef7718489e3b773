#pragma once

// The TLS server of the sandbox, as tests use it: a script decides every byte of an answer.

#include "sandbox/http_message.h" // IWYU pragma: export
#include "sandbox/tls_server.h"   // IWYU pragma: export
