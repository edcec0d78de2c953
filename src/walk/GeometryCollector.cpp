#include <velmora/GeometryCollector.h>

#include <algorithm>

namespace velmora {

void GeometryCollector::surface(const Surface& surface) {
    if (!surfaces_.empty() && surface.command < surfaces_.back().command) surfacesInOrder_ = false;
    surfaces_.push_back(surface);
}

void GeometryCollector::triangle(const std::array<Corner, 3>& corners) {
    triangles_.push_back(
        {corners, static_cast<int32_t>(surfaces_.size()) - 1, depthBias_, command_});
}

void GeometryCollector::line(const std::array<Vector3, 2>& ends) {
    lines_.push_back({ends, static_cast<int32_t>(surfaces_.size()) - 1, command_});
}

const Surface& GeometryCollector::surfaceAtIndex(int32_t index) const {
    static const Surface beforeAny;
    return index < 0 ? beforeAny : surfaces_[static_cast<std::size_t>(index)];
}

const Surface* GeometryCollector::surfaceAt(int32_t command) const {
    const auto matches = [command](const Surface& s) { return s.command == command; };
    if (!surfacesInOrder_) {
        const auto found = std::find_if(surfaces_.begin(), surfaces_.end(), matches);
        return found == surfaces_.end() ? nullptr : &*found;
    }
    const auto found =
        std::lower_bound(surfaces_.begin(), surfaces_.end(), command,
                         [](const Surface& s, int32_t position) { return s.command < position; });
    return found != surfaces_.end() && matches(*found) ? &*found : nullptr;
}

void GeometryCollector::clear() {
    surfaces_.clear();
    triangles_.clear();
    lines_.clear();
    lights_.clear();
    command_ = 0;
    depthBias_ = 0;
    surfacesInOrder_ = true;
}

}  // namespace velmora
