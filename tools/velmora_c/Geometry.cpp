#include "Handles.h"

#include <array>
#include <cstring>
#include <map>

namespace {

using CornerKey = std::array<uint32_t, 8>;

// A corner by the bits of its floats, so that corners alike in every value are kept once.
CornerKey keyOf(const velmora::Corner& corner) {
    std::array<float, 8> values{corner.position[0], corner.position[1], corner.position[2],
                                corner.normal[0],   corner.normal[1],   corner.normal[2],
                                corner.texCoord[0], corner.texCoord[1]};
    CornerKey key{};
    std::memcpy(key.data(), values.data(), sizeof key);
    return key;
}

void addColour(std::vector<float>& values, const std::shared_ptr<velmora::color>& colour) {
    if (colour == nullptr) {
        values.insert(values.end(), {0, 0, 0, 1});
    } else {
        values.insert(values.end(), {colour->r(), colour->g(), colour->b(), colour->a()});
    }
}

void collect(const velmora::MDLObject& model, int day, velmora_geometry& out) {
    velmora::GeometryCollector walked;
    if (day == 0) {
        model.walk(walked);
    } else {
        model.walk(walked, velmora::Scenario().day(day));
    }
    std::map<CornerKey, uint32_t> corners;
    for (const auto& triangle : walked.triangles()) {
        for (const velmora::Corner& corner : triangle.corners) {
            const auto [at, added] =
                corners.try_emplace(keyOf(corner), static_cast<uint32_t>(corners.size()));
            if (added) {
                out.positions.insert(out.positions.end(), corner.position.begin(),
                                     corner.position.end());
                out.normals.insert(out.normals.end(), corner.normal.begin(), corner.normal.end());
                out.uvs.insert(out.uvs.end(), corner.texCoord.begin(), corner.texCoord.end());
            }
            out.indices.push_back(at->second);
        }
        const velmora::Surface& surface = walked.surfaceOf(triangle);
        out.materials.push_back(surface.material);
        out.textures.push_back(surface.texture);
        out.commands.push_back(triangle.command);
        out.surfaceCommands.push_back(surface.command);
    }
    for (const auto& material : *model.MaterialList()) {
        addColour(out.materialValues, material->Diffuse());
        addColour(out.materialValues, material->Ambient());
        addColour(out.materialValues, material->Specular());
        addColour(out.materialValues, material->Emmisive());
        out.materialValues.push_back(material->Power());
    }
    for (const velmora::Light& light : walked.lights()) {
        out.lights.push_back({{light.position[0], light.position[1], light.position[2]},
                              light.colour,
                              light.type,
                              light.command});
    }
}

// The data of a vector, never NULL, so that an empty array is still an array.
template <typename T>
const T* dataOf(const std::vector<T>& values) {
    static const T none{};
    return values.empty() ? &none : values.data();
}

}  // namespace

extern "C" {

velmora_geometry* velmora_walk(velmora_model* model, int day) {
    if (model == nullptr) {
        capi::missing("the model");
        return nullptr;
    }
    auto geometry = std::make_unique<velmora_geometry>();
    const int code = capi::guarded(model->path, [&] {
        if (day < 0 || day > 366) {
            throw velmora::Error(5, "Velmora", "Invalid procedure call or argument")
                .setDetail("the day " + std::to_string(day) + " is not 0 or 1 to 366");
        }
        collect(*model->model, day, *geometry);
    });
    return code == VELMORA_OK ? geometry.release() : nullptr;
}

void velmora_geometry_close(velmora_geometry* geometry) {
    delete geometry;
}

size_t velmora_geometry_corner_count(const velmora_geometry* g) {
    return g->positions.size() / 3;
}
const float* velmora_geometry_positions(const velmora_geometry* g) {
    return dataOf(g->positions);
}
const float* velmora_geometry_normals(const velmora_geometry* g) {
    return dataOf(g->normals);
}
const float* velmora_geometry_uvs(const velmora_geometry* g) {
    return dataOf(g->uvs);
}
size_t velmora_geometry_triangle_count(const velmora_geometry* g) {
    return g->commands.size();
}
const uint32_t* velmora_geometry_indices(const velmora_geometry* g) {
    return dataOf(g->indices);
}
const int32_t* velmora_geometry_materials(const velmora_geometry* g) {
    return dataOf(g->materials);
}
const int32_t* velmora_geometry_textures(const velmora_geometry* g) {
    return dataOf(g->textures);
}
const int32_t* velmora_geometry_commands(const velmora_geometry* g) {
    return dataOf(g->commands);
}
const int32_t* velmora_geometry_surface_commands(const velmora_geometry* g) {
    return dataOf(g->surfaceCommands);
}
size_t velmora_geometry_material_count(const velmora_geometry* g) {
    return g->materialValues.size() / 17;
}
const float* velmora_geometry_material_values(const velmora_geometry* g) {
    return dataOf(g->materialValues);
}
size_t velmora_geometry_light_count(const velmora_geometry* g) {
    return g->lights.size();
}
const velmora_light* velmora_geometry_lights(const velmora_geometry* g) {
    return dataOf(g->lights);
}

}  // extern "C"
