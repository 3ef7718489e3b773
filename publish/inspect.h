#pragma once

// Says what a published file is and whether it holds together.

#include <cstdint>
#include <string>
#include <vector>

#include "publish/statement_writer.h"

struct InspectRequest {
    std::string path;
    std::string manifestPath; // of a package; empty: the one beside it, if it is that package's
    std::string keys;         // public keys as the launcher's configuration has them; empty: signatures are not checked
    std::int64_t nowSeconds = 0;
};

// A package, container, manifest or statement. A manifest is held against the package and the statement that lie beside
// it, a container is decrypted in a stream with the key of its manifest. On false there are words for the user in
// `failureText`; `report` holds what was found before.
[[nodiscard]] bool inspectFile(const InspectRequest& request, StatementReport& report, std::string& failureText);
