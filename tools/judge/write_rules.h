// Rules of writes whose values count: none is left out, and none comes again behind its
// acknowledgement.
#ifndef TAVMIR_JUDGE_WRITE_RULES_H
#define TAVMIR_JUDGE_WRITE_RULES_H

#include "scene.h"

#include <cstdint>
#include <optional>

namespace tavmir::judge
{

class WriteRules
{
public:
    explicit WriteRules(Scene& scene) : scene_(scene) {}
    void take(const Event& event);

private:
    struct Last {
        std::uint32_t value = 0;
        Bytes request; // that carried it
        int client = 0;
        Us sentAt = 0;
        bool isAcknowledged = false;
        bool isDoubtful = false; // whether the host knows its end is open: refused, or cut off
    };

    void request(const Event& event);
    void value(std::uint32_t value, const Event& event);
    void next(std::uint32_t value, const Event& event);
    void sent(const Event& event);
    void closed(const Event& event);
    // How much further `value` is, below 0 behind.
    std::int64_t stepTo(std::uint32_t value) const;

    Scene& scene_;
    std::optional<Last> last_;
};

} // namespace tavmir::judge

#endif
