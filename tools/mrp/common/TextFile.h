#pragma once

#include <optional>
#include <string>

namespace MrpCli {

// The whole of a file, or nullopt with `error` saying why not, for a person:
// "cannot open 'x.json': No such file or directory", "'conf' is a directory".
std::optional<std::string> textFileRead(const std::string& path, std::string& error);

}  // namespace MrpCli
