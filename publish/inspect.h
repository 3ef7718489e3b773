#pragma once

// Describes a published file and checks it. Blocking; any thread.

#include <cstdint>
#include <string>

#include "publish/statement_writer.h"

struct InspectRequest {
    std::string path;
    std::string manifestPath; // of a package; empty: manifest.json in its folder, unless that is for another package
    std::string keys;         // public keys, as in the launcher's configuration; empty: signatures are not checked
    std::int64_t nowSeconds = 0;
};

// Checks a package, container, manifest or statement. A manifest is checked together with the package and the statement
// in its folder, a package or container together with its statement, if its folder has one. A container is decrypted
// with the key in its manifest, without writing a file. On failure returns false and sets `failureText` to a message
// for the user; `report` then contains what was found before the failure.
[[nodiscard]] bool inspectFile(const InspectRequest& request, StatementReport& report, std::string& failureText);
