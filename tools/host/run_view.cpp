// Which view shows what.
#include "run_view.h"

#include "colours.h"
#include "csv_view.h"
#include "json_view.h"
#include "plain_view.h"
#include "screen_view.h"

#include <unistd.h>

namespace tavmir::host
{

std::unique_ptr<RunView> makeRunView(OutputFormat format, bool lineByLine, bool takesCommands,
                                     Console& console)
{
    switch (format) {
    case OutputFormat::json:
        return std::make_unique<JsonView>(console);
    case OutputFormat::csv:
        return std::make_unique<CsvView>(console);
    case OutputFormat::table:
        break;
    }
    if (!lineByLine && ::isatty(STDOUT_FILENO) == 1) {
        std::unique_ptr<RunView> screen = ScreenView::open(console, takesCommands);
        if (screen) {
            return screen;
        }
    }
    return std::make_unique<PlainView>(console, coloursWanted());
}

} // namespace tavmir::host
