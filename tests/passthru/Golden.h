// Whole logs that tests expect, kept in golden/ and read from the real host.
// Each was checked line by line before it was taken over.
#pragma once

#include <string>
#include <vector>

namespace brennik::passthru {

/// The lines of a file in golden/.
std::vector<std::string> Golden(const std::string& strName);

} // namespace brennik::passthru
