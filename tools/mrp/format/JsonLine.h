#pragma once

#include <nlohmann/json.hpp>
#include <string>

namespace MrpCli {

// A JSON value on one line, with a space after every ',' and ':' between
// members and elements ({"frame": 1, "leaveAll": [1, 4]}): the form the
// mrp program prints, easier for a person to read than the compact dump.
// Strings and numbers are written as nlohmann's dump() writes them.
std::string jsonLine(const nlohmann::ordered_json& value);

}  // namespace MrpCli
