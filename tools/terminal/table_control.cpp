// One function for each mode.
#include "table_control.h"

#include <algorithm>
#include <limits>

namespace tavmir::host
{

namespace
{

constexpr int kLongestText = 1000;

} // namespace

TableWish TableControl::press(const Key& key)
{
    if (key.kind == Key::Kind::redraw) {
        return TableWish::redraw;
    }
    if (scroll(key.kind)) {
        return TableWish::nothing;
    }
    switch (mode_) {
    case TableMode::table:
        return pressInTable(key);
    case TableMode::filter:
        return pressInText(key, filter_);
    case TableMode::command:
        return pressInText(key, command_);
    case TableMode::help:
        mode_ = TableMode::table;
        break;
    }
    return TableWish::nothing;
}

bool TableControl::scroll(Key::Kind kind)
{
    int& first = first_[mode_ == TableMode::help ? 1 : 0];
    const int page = std::max(1, room_ - 1);
    switch (kind) {
    case Key::Kind::up:
        first -= 1;
        break;
    case Key::Kind::down:
        first += 1;
        break;
    case Key::Kind::pageUp:
        first -= page;
        break;
    case Key::Kind::pageDown:
        first += page;
        break;
    case Key::Kind::home:
        first = 0;
        break;
    case Key::Kind::end:
        first = std::numeric_limits<int>::max() / 2;
        break;
    default:
        return false;
    }
    return true;
}

int TableControl::firstOf(int count, int room)
{
    int& first = first_[mode_ == TableMode::help ? 1 : 0];
    room_ = room;
    first = std::max(0, std::min(first, count - room));
    return first;
}

TableWish TableControl::pressInTable(const Key& key)
{
    if (key.kind == Key::Kind::escape) {
        enter(TableMode::table);
        filter_.clear();
    }
    if (key.kind != Key::Kind::character) {
        return TableWish::nothing;
    }
    switch (key.character) {
    case 'q':
        return TableWish::end;
    case '/':
        enter(TableMode::filter);
        break;
    case ':':
        enter(takesCommands_ ? TableMode::command : TableMode::table);
        break;
    case '?':
        enter(TableMode::help);
        break;
    case 'n':
        sortBy(SortBy::name);
        break;
    case 'a':
        sortBy(SortBy::age);
        break;
    case 'w':
        sortBy(SortBy::quality);
        break;
    case 'p':
        order_ = RowOrder();
        break;
    default:
        break;
    }
    return TableWish::nothing;
}

TableWish TableControl::pressInText(const Key& key, QString& text)
{
    first_[0] = mode_ == TableMode::filter ? 0 : first_[0];
    if (key.kind == Key::Kind::escape) {
        text.clear();
        mode_ = TableMode::table;
    } else if (key.kind == Key::Kind::backspace) {
        const bool isPair = text.size() > 1 && text.at(text.size() - 1).isLowSurrogate();
        text.chop(isPair ? 2 : 1);
    } else if (key.kind == Key::Kind::enter) {
        const bool isCommand = mode_ == TableMode::command && !text.isEmpty();
        mode_ = TableMode::table;
        return isCommand ? TableWish::command : TableWish::nothing;
    } else if (key.kind == Key::Kind::character && text.size() < kLongestText) {
        text += QString::fromUcs4(&key.character, 1);
    }
    return TableWish::nothing;
}

void TableControl::sortBy(SortBy by)
{
    order_ = {by, order_.by == by && !order_.reversed};
    first_[0] = 0;
}

void TableControl::enter(TableMode mode)
{
    mode_ = mode;
    if (mode == TableMode::command) {
        command_.clear();
    }
    first_[1] = 0;
}

} // namespace tavmir::host
