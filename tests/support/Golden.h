#pragma once

#include <filesystem>
#include <string>

namespace MrpTest {

// Golden files: what a program prints, kept in the repository and compared
// byte for byte. With MRP_REGENERATE_GOLDEN=1 the files are written again
// instead; the diff is then to be reviewed before commit.

bool regeneratingGolden();
// The file's octets as a string; "" for a file that is not there.
std::string fileText(const std::filesystem::path& path);
// The one stretch where `expected` and `actual` differ, between their
// common first and last lines, as "-" (golden) and "+" (now) lines with
// their line numbers and a little context; "" when they are equal.
std::string lineDiff(const std::string& expected, const std::string& actual);
// Fails the current test, with the diff and the command that regenerates
// the file, when `actual` is not the file's text; writes it when
// regenerating. `what` names the output ("mrp sim").
void expectGolden(const std::filesystem::path& path, const std::string& actual, const std::string& what);

}  // namespace MrpTest
