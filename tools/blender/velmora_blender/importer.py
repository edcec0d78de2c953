"""Scenery models into Blender: meshes, materials, images, seasons, size branches and lights."""

import os

import bpy
import numpy

from . import velmora

# The model's axes are x east, y up, z north; Blender's X east, Y north, Z up. Swapping y and z
# mirrors, and a mirror turns the cross product round: with the corners a, b, c kept in order,
# Blender's counter-clockwise normal (b - a) x (c - a) of the swapped corners is the swapped
# (c - a) x (b - a), the direction the model's front faces. So faces keep their corner order.
_AXES = [0, 2, 1]

# The scenario's day when none is chosen (21 June): the seasonal variant shown on it stays visible.
_SHOWN_DAY = 172


def _blender(vectors):
    return numpy.asarray(vectors, dtype=numpy.float32)[:, _AXES]


def _texture_folders(path, chosen):
    beside = os.path.dirname(os.path.abspath(path))
    folders = [chosen] if chosen else []
    folders += [beside, os.path.join(beside, "texture"), os.path.join(beside, "textures")]
    return [folder for folder in folders if os.path.isdir(folder)]


def _find_image(name, folders):
    """The file of a texture by its name, whatever its case, in the first folder that has it."""
    wanted = os.path.basename(name.replace("\\", "/")).lower()
    for folder in folders:
        for entry in sorted(os.listdir(folder)):
            if entry.lower() == wanted and os.path.isfile(os.path.join(folder, entry)):
                return os.path.join(folder, entry)
    return None


class _Materials:
    """The Blender materials of one model, one a (material, texture) pair."""

    def __init__(self, name, info, geometry, folders, warnings):
        self.name = name
        self.textures = [texture["name"] for texture in info["textures"]]
        self.values = geometry.material_values
        self.folders = folders
        self.warnings = warnings
        self.made = {}

    def get(self, material, texture):
        key = (int(material), int(texture))
        if key not in self.made:
            self.made[key] = self._make(*key)
        return self.made[key]

    def _make(self, material, texture):
        textured = 0 <= texture < len(self.textures)
        label = self.textures[texture] if textured else "material %d" % material
        made = bpy.data.materials.new("%s %s" % (self.name, label))
        made.use_nodes = True
        shader = made.node_tree.nodes.get("Principled BSDF")
        if 0 <= material < len(self.values):
            diffuse = [float(v) for v in self.values[material][0:4]]
            made.diffuse_color = diffuse
            shader.inputs["Base Color"].default_value = diffuse
            shader.inputs["Alpha"].default_value = diffuse[3]
        if textured:
            found = _find_image(self.textures[texture], self.folders)
            if found is None:
                self.warnings.append("%s: texture %s not found" % (self.name, label))
            else:
                node = made.node_tree.nodes.new("ShaderNodeTexImage")
                node.image = bpy.data.images.load(found, check_existing=True)
                made.node_tree.links.new(node.outputs["Color"], shader.inputs["Base Color"])
        return made


def _mesh(name, geometry, chosen, materials, texture=None):
    """A mesh of the chosen triangles; `texture` stands for theirs where given (a season's)."""
    indices = geometry.indices[chosen]
    # Triangles whose corners are alike have no area and no face in Blender.
    whole = ((indices[:, 0] != indices[:, 1]) & (indices[:, 1] != indices[:, 2]) &
             (indices[:, 0] != indices[:, 2]))
    indices = indices[whole]
    used, corners = numpy.unique(indices, return_inverse=True)
    corners = corners.reshape(-1, 3)
    mesh = bpy.data.meshes.new(name)
    mesh.from_pydata(_blender(geometry.positions[used]).tolist(), [], corners.tolist())

    loops = indices.ravel()
    uvs = geometry.uvs[loops].copy()
    uvs[:, 1] = 1.0 - uvs[:, 1]  # the model's texture rows run down, Blender's up
    mesh.uv_layers.new(name="UVMap").data.foreach_set("uv", uvs.ravel())

    normals = _blender(geometry.normals[loops])
    lengths = numpy.linalg.norm(normals, axis=1)
    normals[lengths > 0] /= lengths[lengths > 0, None]
    mesh.use_auto_smooth = True
    mesh.normals_split_custom_set(normals.tolist())

    pairs = list(zip(geometry.materials[chosen][whole].tolist(),
                     (geometry.textures[chosen][whole] if texture is None
                      else numpy.full(len(indices), texture)).tolist()))
    slots = {}
    for pair in pairs:
        if pair not in slots:
            slots[pair] = len(slots)
            mesh.materials.append(materials.get(*pair))
    mesh.polygons.foreach_set("material_index", [slots[pair] for pair in pairs])
    mesh.update()
    return mesh


def _shows_on(days, day):
    if days is None:
        return True
    first, last = days
    return first <= day <= last if first <= last else (day >= first or day <= last)


def _variant_shown(variants):
    """The variant that shows on the scenario's day: the first whose days hold it."""
    for variant in variants:
        if variant["days"] is not None and _shows_on(variant["days"], _SHOWN_DAY):
            return variant
    return next((v for v in variants if v["days"] is None), variants[0])


def _object(name, data, collection, properties):
    made = bpy.data.objects.new(name, data)
    collection.objects.link(made)
    for key, value in properties.items():
        made[key] = value
    return made


def _child(parent, name):
    collection = bpy.data.collections.new(name)
    parent.children.link(collection)
    return collection


def import_model(model, name, folders, parent, extra=None):
    """One model as a collection of its own in `parent`; gives what could not be kept."""
    warnings = []
    info = model.info()
    geometry = model.geometry()
    properties = {"velmora_guard": info["guard"]["formula"] or "",
                  "velmora_isft": info.get("isft", "")}
    properties.update(extra or {})
    collection = _child(parent, name)
    for key, value in properties.items():
        collection[key] = value
    materials = _Materials(name, info, geometry, folders, warnings)

    remaining = numpy.ones(len(geometry.indices), dtype=bool)
    surfaces, commands = geometry.surface_commands, geometry.commands
    for number, run in enumerate(info["seasons"], 1):
        chosen = remaining & (surfaces >= run["first"]) & (surfaces <= run["last"])
        if not chosen.any():
            continue
        remaining &= ~chosen
        seasons = _child(collection, "%s seasons %d" % (name, number))
        shown = _variant_shown(run["variants"])
        for variant in run["variants"]:
            days = ("days %d-%d" % tuple(variant["days"]) if variant["days"] is not None
                    else "other days")
            label = "%s %s (%s)" % (name, variant["name"], days)
            made = _object(label, _mesh(label, geometry, chosen, materials, variant["texture"]),
                           seasons, properties)
            made.hide_viewport = made.hide_render = variant is not shown
    for test in info["sizeTests"]:
        chosen = remaining & (commands > test["position"]) & (commands < test["failsTo"])
        if not chosen.any():
            continue
        remaining &= ~chosen
        label = "%s detail over %s pixels" % (name, test["pixels"])
        _object(label, _mesh(label, geometry, chosen, materials), _child(collection, label),
                properties)
    if remaining.any():
        _object(name, _mesh(name, geometry, remaining, materials), collection, properties)

    for number, light in enumerate(geometry.lights, 1):
        lamp = bpy.data.lights.new("%s light %d" % (name, number), type="POINT")
        colour = light["colour"]
        lamp.color = [((colour >> shift) & 255) / 255.0 for shift in (16, 8, 0)]
        placed = _object(lamp.name, lamp, collection, properties)
        placed.location = _blender([light["position"]])[0].tolist()
    return warnings


def import_model_file(context, path, texture_folder=""):
    with velmora.open(path) as model:
        name = os.path.splitext(os.path.basename(path))[0]
        return import_model(model, name, _texture_folders(path, texture_folder),
                            context.scene.collection)


def import_compiled_file(context, path, texture_folder=""):
    name = os.path.splitext(os.path.basename(path))[0]
    folders = _texture_folders(path, texture_folder)
    parent = _child(context.scene.collection, name)
    warnings = []
    for model in velmora.scan(path):
        record = model.record
        extra = {"velmora_guid": record["guid"] or ""}
        warnings += import_model(model, "%s model %d" % (name, record["model"]), folders, parent,
                                 extra)
        model.close()
    return warnings
