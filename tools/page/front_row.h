// A row that grows at its end and goes at its front, seldom at its end. An empty one has no memory
// beside itself, and a long one hardly more than what it holds: there are very many.
#ifndef TAVMIR_PAGE_FRONT_ROW_H
#define TAVMIR_PAGE_FRONT_ROW_H

#include <cstddef>
#include <utility>
#include <vector>

namespace tavmir::host
{

template <typename Item> class FrontRow
{
public:
    bool empty() const { return size() == 0; }
    size_t size() const { return items_.size() - gone_; }
    Item& front() { return items_[gone_]; }
    Item& back() { return items_.back(); }
    const Item& operator[](size_t index) const { return items_[gone_ + index]; }

    void push_back(Item item)
    {
        if (items_.size() == items_.capacity()) {
            items_.reserve(items_.size() + items_.size() / kMore + 1);
        }
        items_.push_back(std::move(item));
    }
    void pop_front()
    {
        {
            const Item gone(std::move(items_[gone_])); // with what it has elsewhere
        }
        ++gone_;
        if (gone_ * kMore >= items_.size()) {
            items_.erase(items_.begin(), items_.begin() + static_cast<std::ptrdiff_t>(gone_));
            gone_ = 0;
            giveBack();
        }
    }
    void pop_back()
    {
        items_.pop_back();
        if (empty()) {
            items_.clear();
            gone_ = 0;
        }
        giveBack();
    }

    // Of its memory, without what the items have elsewhere.
    size_t bytes() const { return items_.capacity() * sizeof(Item); }

private:
    static constexpr size_t kMore = 8; // so many hold one more for what comes or went

    void giveBack()
    {
        if (items_.size() < items_.capacity() / 2) {
            items_.shrink_to_fit();
        }
    }

    std::vector<Item> items_;
    size_t gone_ = 0;
};

} // namespace tavmir::host

#endif
