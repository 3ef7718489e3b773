#pragma once

// Describes a published file and checks it. Blocking; any thread.

#include <cstdint>
#include <string>

#include "publish/statement_writer.h"

struct InspectRequest {
    std::string path;
    std::string manifestPath; // for a package; empty: manifest.json in its folder, when that names this package
    std::string keys;         // public keys, as in the launcher's configuration; empty: signatures are not checked
    std::int64_t nowSeconds = 0;
};

// Takes a package, container, manifest or statement. A manifest is checked together with the package and the statement
// in its folder. A container is decrypted in a stream with the key of its manifest. Returns false with a message for
// the user in `failureText`; `report` then holds what was found up to that point.
[[nodiscard]] bool inspectFile(const InspectRequest& request, StatementReport& report, std::string& failureText);
