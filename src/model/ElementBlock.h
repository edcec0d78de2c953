#pragma once

#include <cstddef>
#include <memory>

namespace velmora::detail {

// Decoded list entries live in one allocation; each entry is handed out as a shared_ptr that
// aliases the block, so a list of 65,535 vertices costs one allocation and not 65,535.
template <class T>
class ElementBlock {
  public:
    explicit ElementBlock(std::size_t count) : block_(std::make_shared<T[]>(count)) {}

    T& operator[](std::size_t index) { return block_[index]; }
    std::shared_ptr<T> share(std::size_t index) const {
        return std::shared_ptr<T>(block_, &block_[index]);
    }

  private:
    std::shared_ptr<T[]> block_;
};

}  // namespace velmora::detail
