// A terminal that gives each key at once and does not show it; as it was before in the end. Signals
// of keys stay what they are, but for the one that stops a program: nobody would answer the
// controller meanwhile.
#ifndef TAVMIR_TERMINAL_KEY_MODE_H
#define TAVMIR_TERMINAL_KEY_MODE_H

#include <termios.h>

namespace tavmir::host
{

class KeyMode
{
public:
    // Does nothing to a descriptor that is no terminal, or one of which this program is in the
    // background.
    explicit KeyMode(int descriptor);
    ~KeyMode() { end(); }
    KeyMode(const KeyMode&) = delete;
    KeyMode& operator=(const KeyMode&) = delete;

    bool givesKeys() const { return isSet_; }
    // As it was before. Waits for nothing.
    void end();

private:
    int descriptor_;
    bool isSet_ = false;
    termios before_ = {};
};

} // namespace tavmir::host

#endif
