// What a run of the model has met: agreement means little about situations that never arose.
#ifndef TAVMIR_TESTS_MODEL_SIGHTINGS_H
#define TAVMIR_TESTS_MODEL_SIGHTINGS_H

#include "model/driver_model.h"

#include <map>
#include <string>
#include <vector>

namespace tavmir::model
{

class Sightings
{
public:
    // After each call: what it did, and the state it left.
    void look(const DriverModel& model);

    // Situations of the fixed list that never arose.
    std::vector<std::string> missing() const;

    const std::map<std::string, unsigned long>& counts() const { return counts_; }

private:
    void lookAtEvent(const Event& event);

    std::map<std::string, unsigned long> counts_;
};

} // namespace tavmir::model

#endif
