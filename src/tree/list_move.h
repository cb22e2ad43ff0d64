#pragma once

#include <algorithm>
#include <cstddef>
#include <iterator>
#include <vector>

namespace kivo {

// Moves the elements at `offsets` so that they stand, in their old relative order, before the
// element that was at `destination` (the end when it equals the size), as a drag and drop does.
// False, with nothing moved, when an offset or the destination lies outside the list.
template <class Element>
bool moveElements(std::vector<Element>& list, std::vector<std::size_t> offsets,
                  std::size_t destination) {
    std::sort(offsets.begin(), offsets.end());
    offsets.erase(std::unique(offsets.begin(), offsets.end()), offsets.end());
    if (destination > list.size() || (!offsets.empty() && offsets.back() >= list.size())) {
        return false;
    }
    std::vector<Element> moved;
    std::vector<Element> kept;
    std::size_t insertAt = destination;
    for (std::size_t index = 0, next = 0; index < list.size(); ++index) {
        if (next < offsets.size() && offsets[next] == index) {
            moved.push_back(std::move(list[index]));
            ++next;
            if (index < destination) {
                --insertAt;
            }
        } else {
            kept.push_back(std::move(list[index]));
        }
    }
    kept.insert(kept.begin() + static_cast<std::ptrdiff_t>(insertAt),
                std::make_move_iterator(moved.begin()), std::make_move_iterator(moved.end()));
    list = std::move(kept);
    return true;
}

}  // namespace kivo
