// Rules that a request keeps by itself: whole, well formed, not too long, to a station that is
// there.
#ifndef TAVMIR_JUDGE_FRAME_RULES_H
#define TAVMIR_JUDGE_FRAME_RULES_H

#include "scene.h"

namespace tavmir::judge
{

class FrameRules
{
public:
    explicit FrameRules(Scene& scene) : scene_(scene) {}
    void take(const Event& event);

private:
    void request(const Event& event);
    void unframed(const Event& event);

    Scene& scene_;
};

} // namespace tavmir::judge

#endif
