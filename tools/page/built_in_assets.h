// The files of the page, which are built into the program: no folder to deploy. The table is
// generated from tools/page/web by embed_assets.cmake.
#ifndef TAVMIR_PAGE_BUILT_IN_ASSETS_H
#define TAVMIR_PAGE_BUILT_IN_ASSETS_H

#include <string_view>
#include <vector>

namespace tavmir::page
{

struct Asset {
    std::string_view path; // "/app/store.js"; the page itself is "/"
    std::string_view type; // "text/javascript; charset=utf-8"
    std::string_view bytes;
};

using Assets = std::vector<Asset>;

// Valid as long as the program runs. Any thread.
const Assets& builtInAssets();

} // namespace tavmir::page

#endif
