#include "model/step_table.h"

namespace tavmir::model
{

StepTable::Call StepTable::callOf(unsigned kind)
{
    struct Share {
        unsigned upTo;
        Call call;
    };
    static const Share shares[] = {{30, &Session::wholeTurn},
                                   {35, &Session::communicate},
                                   {40, &Session::answer},
                                   {45, &Session::rebuild},
                                   {47, &Session::addRead},
                                   {53, &Session::addWrite},
                                   {60, &Session::addOnceRead},
                                   {71, &Session::get},
                                   {82, &Session::set},
                                   {83, &Session::storeLocally},
                                   {89, &Session::parse},
                                   {91, &Session::stations},
                                   {92, &Session::passLabels},
                                   {95, &Session::changeWords},
                                   {96, &Session::changeCallbacks},
                                   {97, &Session::tamperWithRequest},
                                   {99, &Session::checkRemote},
                                   {100, &Session::constants}};
    for (const Share& share : shares) {
        if (kind < share.upTo) {
            return share.call;
        }
    }
    return &Session::constants;
}

} // namespace tavmir::model
