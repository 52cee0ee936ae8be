// What content and server share.
#include "page_content.h"

namespace tavmir::page
{

PageContent::~PageContent() = default;

const std::string* Query::find(const char* name) const
{
    for (const auto& item : items) {
        if (item.first == name) {
            return &item.second;
        }
    }
    return nullptr;
}

} // namespace tavmir::page
