// The example project is a good one and holds what it is an example of.
#include "project/address_expansion.h"

#include "test_project.h"

namespace tavmir::project
{

TEST(Example, ReadsAndHasOneOfEach)
{
    const ReadOutcome outcome = readProjectFile(TAVMIR_EXAMPLE_PROJECT);
    ASSERT_TRUE(outcome.project.has_value()) << outcome.error.toStdString();
    bool structures = false;
    bool bitOfWord = false;
    bool text = false;
    bool real = false;
    for (const Polled& polled : outcome.project->polled) {
        for (const Element& element :
             expandAddress(*outcome.project, polled.address, polled.count).elements) {
            structures = structures || element.addressText.contains("].");
            bitOfWord = bitOfWord || element.bitNumber.has_value();
            text = text || element.type == DataType::text;
            real = real || element.type == DataType::real;
        }
    }
    EXPECT_TRUE(structures && bitOfWord && text && real);
    EXPECT_GT(outcome.project->movingSignals.size(), 6u);
    EXPECT_GT(outcome.project->initial.size(), 6u);
}

} // namespace tavmir::project
