// Goes through the situations: waits for the host, begins one after the other, and behind each
// waits until the host goes on as before. Events go in, those that the course makes come out.
//
//   waiting ──host is there──▶ playing ──time or times over──▶ recovering ──goes on──▶ playing …
//      │                                                          │                      │
//      └──────────────── nobody came, does not go on, nothing left: over ◀───────────────┘
#ifndef TAVMIR_JUDGE_COURSE_H
#define TAVMIR_JUDGE_COURSE_H

#include "event.h"
#include "stage.h"

#include <set>
#include <vector>

namespace tavmir::judge
{

class Course
{
public:
    enum class Phase { waiting, playing, recovering, over };
    // What becomes of who connects.
    enum class Door { open, shut, turnsAway };

    explicit Course(const Script& script) : script_(script) {}
    Course(Script&&) = delete; // it must outlive the course

    // Each event of the line, and ticks. Made events have happened when they are out: the door
    // may have changed.
    std::vector<Event> take(const Event& event);

    // What is sent for a request, from the situation on.
    Stage& stage() { return stage_; }

    Phase phase() const { return phase_; }
    Door door() const;
    bool hostCame() const { return hostCame_; }
    // How many situations have begun.
    std::size_t begun() const { return begun_; }
    // All of them were played to their end.
    bool isComplete() const { return isComplete_; }

private:
    void begin(Us now, std::vector<Event>& made);
    void makes(Event::Kind kind, Us now, std::vector<Event>& made);
    void tick(Us now, std::vector<Event>& made);
    bool goesOn(const Event& event);

    const Script& script_;
    Stage stage_;
    Phase phase_ = Phase::waiting;
    Us since_ = 0; // of the phase
    std::size_t begun_ = 0;
    std::set<int> answered_; // connections that have had a right reply in this phase
    bool hostCame_ = false;
    bool isComplete_ = false;
};

} // namespace tavmir::judge

#endif
