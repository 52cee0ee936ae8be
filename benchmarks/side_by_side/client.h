// What the side-by-side comparison asks of each client.
#ifndef TAVMIR_BENCHMARKS_SIDE_BY_SIDE_CLIENT_H
#define TAVMIR_BENCHMARKS_SIDE_BY_SIDE_CLIENT_H

#include <chrono>
#include <memory>

namespace tavmir
{
namespace bench
{

// The values to keep fresh: so many 16-bit values.
const int kValues = 10000;

enum class Layout {
    scattered, // no two adjacent
    contiguous
};

struct Done {
    long values = 0;
    long requests = 0;
};

// One request in flight at a time, as a controller of this kind takes them.
class Client
{
public:
    virtual ~Client() = default;
    virtual const char* name() const = 0;

    // Connects to the responder and reads values, all of them in turn, again and again, until
    // the time is over. Ends the program with a message when something fails.
    virtual void connectTo(int port, Layout layout) = 0;
    virtual Done readFor(std::chrono::milliseconds duration) = 0;
    virtual void disconnect() = 0;
    // Entries of the feed that its readers missed in between, since the machine was busy: so much
    // less than they should have did they do.
    virtual long missed() const { return 0; }
};

std::unique_ptr<Client> makeLibmodbusClient();
std::unique_ptr<Client> makeQtClient(); // needs a QCoreApplication
// Who reads what happens, on a thread of its own.
enum class FeedUse {
    none,
    folded,   // into values, ages and figures, as in a run
    captured, // the same, and written into a capture
    traced,   // folded, and told in words into a file
    paged     // folded, and shown by a page that somebody has open
};
std::unique_ptr<Client> makeDriverClient(FeedUse use);
std::unique_ptr<Client> makeBareClient();

} // namespace bench
} // namespace tavmir

#endif
