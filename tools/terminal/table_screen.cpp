// Keys, size and pictures put together.
#include "table_screen.h"

#include <clocale>
#include <sys/ioctl.h>
#include <unistd.h>

namespace tavmir::host
{

namespace
{

ScreenSize terminalSize()
{
    winsize size = {};
    if (::ioctl(STDOUT_FILENO, TIOCGWINSZ, &size) != 0 || size.ws_row == 0 || size.ws_col == 0) {
        return ScreenSize();
    }
    return {size.ws_row, size.ws_col};
}

} // namespace

TableScreen::TableScreen(const ScreenOutput& output, bool takesCommands)
    : output_(output), keys_(STDIN_FILENO), control_(takesCommands && keys_.givesKeys())
{
}

TableScreen::~TableScreen()
{
    leave();
}

std::unique_ptr<TableScreen> TableScreen::open(const ScreenOutput& output, bool takesCommands,
                                               bool colours)
{
    std::unique_ptr<TableScreen> screen(new TableScreen(output, takesCommands));
    return screen->begin(colours) ? std::move(screen) : nullptr;
}

bool TableScreen::begin(bool colours)
{
    std::setlocale(LC_CTYPE, ""); // widths, and what can be drawn at all
    screen_ = CursesScreen::open(keys_.givesKeys() ? STDIN_FILENO : -1, colours);
    if (!screen_) {
        return false;
    }
    size_ = terminalSize();
    screen_->resize(size_);
    return true;
}

void TableScreen::show(const TableContent& content)
{
    content_ = content;
    isWanted_ = true;
    drawIfWanted();
}

void TableScreen::drawIfWanted()
{
    if (!isWanted_ || hasLeft_ || output_.isBehind()) {
        return;
    }
    isWanted_ = false;
    output_.send(screen_->draw(drawer_.draw(content_, control_, size_)));
}

TableScreen::Wish TableScreen::look()
{
    if (hasLeft_) {
        return Wish::nothing;
    }
    const ScreenSize size = terminalSize();
    if (!(size == size_)) {
        size_ = size;
        screen_->resize(size);
        isWanted_ = true;
    }
    Wish wish = Wish::nothing;
    while (wish == Wish::nothing) {
        const std::optional<Key> key = screen_->key();
        if (!key) {
            break;
        }
        isWanted_ = true;
        switch (control_.press(*key)) {
        case TableWish::end:
            wish = Wish::end;
            break;
        case TableWish::command:
            wish = Wish::command;
            break;
        case TableWish::redraw:
            screen_->redraw();
            break;
        case TableWish::nothing:
            break;
        }
    }
    drawIfWanted();
    return wish;
}

void TableScreen::leave()
{
    if (hasLeft_ || !screen_) {
        return;
    }
    hasLeft_ = true;
    output_.send(screen_->leave());
    keys_.end();
}

} // namespace tavmir::host
