// What goes to the person or the script that called.
#pragma once

#include <json/json.h>

#include <string>
#include <string_view>
#include <vector>

#include "IpodControl/Problem.h"

namespace IpodControl {

enum ExitStatus : int {
    kDone = 0,
    kRefused = 1,    ///< the service said no, or what was waited for did not come
    kUsage = 2,      ///< what was typed cannot be carried out
    kNoService = 3,  ///< none there, or it does not answer as one
};

/// To standard output, as it is.
void PrintText(std::string_view text);
/// With a line end.
void PrintLine(std::string_view line);
void PrintJson(const Json::Value& value);
/// One sentence to standard error, as this program's.
void Complain(std::string_view sentence);
/// Complains, and answers with kNoService.
int Complain(const Problem& problem);
/// False when standard output does not take what was printed, which is then told.
bool FlushOutput();

using Rows = std::vector<std::vector<std::string>>;
/// In columns; a first column of numbers stands to the right. Cells are made harmless.
void PrintTable(Rows rows, bool isNumbered = false);

}  // namespace IpodControl
