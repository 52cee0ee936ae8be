// What content and server share.
#include "page_content.h"

namespace tavmir::page
{

PageContent::~PageContent() = default;

void PageContent::ask(const std::string& what, const Query& query, Done done)
{
    done(get(what, query));
}

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
