#pragma once

#include "app/CommandLine.h"

class QByteArray;
class MarksServices;
class SingleInstance;

/// `--export-marks` and `--import-marks`: marks as text, out of the catalogue and into it.
namespace MarksCommand {

/// Does what the options say, in the program that has the catalogue open if there is one, and
/// answers the exit code. Needs an application object, and no display.
[[nodiscard]] int run(const CommandLineOptions& options);

/// Has the running program answer later starts that ask for marks or bring some.
void answerLaterStarts(SingleInstance& instance, MarksServices& marks);

} // namespace MarksCommand
