#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

namespace kivo {

// Dense numbers for the distinct texts of a column, so that many rows are grouped or looked up
// without making a string for every row.
class TextNumbers {
public:
    std::uint32_t numberOf(std::string_view text) {
        // Neighbouring rows often share a text: the indexes order a moment's rows by it.
        if (!texts_.empty() && text == texts_[lastNumber_]) {
            return lastNumber_;
        }
        const auto found = numbers_.find(text);
        if (found != numbers_.end()) {
            lastNumber_ = found->second;
        } else {
            lastNumber_ = static_cast<std::uint32_t>(texts_.size());
            // The map's nodes stay put, so their keys can be viewed by number.
            texts_.push_back(numbers_.emplace(std::string(text), lastNumber_).first->first);
        }
        return lastNumber_;
    }
    std::string_view text(std::uint32_t number) const { return texts_[number]; }
    std::size_t size() const { return texts_.size(); }

private:
    struct Hash {
        using is_transparent = void;
        std::size_t operator()(std::string_view text) const {
            return std::hash<std::string_view>{}(text);
        }
    };

    std::unordered_map<std::string, std::uint32_t, Hash, std::equal_to<>> numbers_;
    std::vector<std::string_view> texts_;
    std::uint32_t lastNumber_ = 0;
};

}  // namespace kivo
