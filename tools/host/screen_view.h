// A table that lives on a terminal, with keys. After the end the values that it showed last, all
// messages and the closing lines stand there once.
#ifndef TAVMIR_HOST_SCREEN_VIEW_H
#define TAVMIR_HOST_SCREEN_VIEW_H

#include "run_view.h"
#include "terminal/table_screen.h"

namespace tavmir::host
{

class ScreenView : public RunView
{
public:
    // Null when standard output is a terminal that cannot show it.
    static std::unique_ptr<RunView> open(Console& console, bool takesCommands);
    ~ScreenView() override;

    void show(const std::vector<ValueRow>& rows, const LineState& state) override;
    void change(const ValueRow& row, WallClock::time_point time) override;
    void message(const QString& text) override;
    bool staysInPlace() const override { return true; }
    bool look() override;
    int commands() const override { return commands_[0]; }
    void leave() override;
    void close(const QStringList& lines, const QJsonObject& json) override;

private:
    explicit ScreenView(Console& console) : console_(console) {}

    TableContent contentOf(const std::vector<ValueRow>& rows, const LineState& state) const;
    void drawAgain();
    void passOn(const QString& command);
    QStringList lastPicture() const;

    Console& console_;
    std::unique_ptr<TableScreen> screen_;
    int commands_[2] = {-1, -1}; // a pipe: what is typed comes out of the first
    std::vector<ValueRow> rows_; // as shown last
    LineState state_;
    bool shown_ = false;
    QStringList messages_; // the latest
    quint64 forgotten_ = 0;
};

} // namespace tavmir::host

#endif
