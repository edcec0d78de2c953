"""Velmora for Python: open flight-simulator scenery models (RIFF MDL9), read what they hold,
edit, save and export them, and find the models of compiled scenery files (.bgl).

    import velmora
    model = velmora.open("building.mdl")
    print(model.info()["counts"], model.positions.shape)
    model.edit(condition=["between 798 2 5"], combine="or")
    model.save("edited.mdl")

The package is pure Python on the library's C interface (ctypes and the shared library beside
it), so it runs unchanged in any Python 3 with numpy, Blender's own included.
"""

import json

import numpy

from . import _native
from ._native import lib

__all__ = ["Error", "Refused", "Model", "Geometry", "open", "scan", "version"]


class Error(Exception):
    """A failure of the library: `number`, `source` and `description` as the library gives them,
    `file` where it lies and `context`, the whole of what is known (section, offset, command)."""

    def __init__(self, message, context):
        super().__init__(message)
        self.message = message
        self.context = context
        self.number = context.get("number", 0)
        self.source = context.get("source", "")
        self.description = context.get("description", "")
        self.file = context.get("file")


class Refused(Error):
    """An edit refused since it would lose or misstate something of the model; the message is the
    velmora tool's, `reasons` what it would do wrong. `force=True` does it anyway."""

    def __init__(self, message, context):
        super().__init__(message, context)
        self.reasons = context.get("reasons", [])


def _last_error():
    context = json.loads(_native.decoded(lib.velmora_last_error_json()))
    kind = Refused if context.get("refused") else Error
    return kind(context.get("message", ""), context)


def _checked(code):
    if code != _native.OK:
        raise _last_error()


def _given(result):
    if not result:
        raise _last_error()
    return result


def version():
    return _native.decoded(lib.velmora_version())


def _array(pointer, count, width, kind):
    if count == 0:
        return numpy.zeros((0, width), dtype=kind)
    return numpy.ctypeslib.as_array(pointer, shape=(count, width)).astype(kind, copy=True)


class Geometry:
    """What a walk over a model's command stream draws, in the model's axes (x east, y up,
    z north): the corners (`positions`, `normals` N×3, `uvs` N×2, as the vertices give them),
    the triangles (`indices` T×3 into the corners, their front facing (c − a) × (b − a)), and
    beside each triangle its `materials`, `textures` (-1 for none), `commands` (the 1-based
    position of the command that drew it) and `surface_commands` (that of the SET_MATERIAL in
    force, 0 before any); `material_values` M×17 (diffuse, ambient, specular,
    emissive r g b a, power) and `lights` (dicts of position, colour 0xAARRGGBB, type, command)."""

    def __init__(self, handle):
        try:
            corners = lib.velmora_geometry_corner_count(handle)
            triangles = lib.velmora_geometry_triangle_count(handle)
            materials = lib.velmora_geometry_material_count(handle)
            self.positions = _array(lib.velmora_geometry_positions(handle), corners, 3,
                                    numpy.float32)
            self.normals = _array(lib.velmora_geometry_normals(handle), corners, 3, numpy.float32)
            self.uvs = _array(lib.velmora_geometry_uvs(handle), corners, 2, numpy.float32)
            self.indices = _array(lib.velmora_geometry_indices(handle), triangles, 3, numpy.uint32)
            self.materials = _array(lib.velmora_geometry_materials(handle), triangles, 1,
                                    numpy.int32).ravel()
            self.textures = _array(lib.velmora_geometry_textures(handle), triangles, 1,
                                   numpy.int32).ravel()
            self.commands = _array(lib.velmora_geometry_commands(handle), triangles, 1,
                                   numpy.int32).ravel()
            self.surface_commands = _array(lib.velmora_geometry_surface_commands(handle),
                                           triangles, 1, numpy.int32).ravel()
            self.material_values = _array(lib.velmora_geometry_material_values(handle), materials,
                                          17, numpy.float32)
            lights = lib.velmora_geometry_lights(handle)
            self.lights = [{"position": tuple(lights[i].position), "colour": lights[i].colour,
                            "type": lights[i].type, "command": lights[i].command}
                           for i in range(lib.velmora_geometry_light_count(handle))]
        finally:
            lib.velmora_geometry_close(handle)

    def by_material(self):
        """The triangles' indices grouped by (material, texture)."""
        groups = {}
        for key in sorted(set(zip(self.materials.tolist(), self.textures.tolist()))):
            chosen = (self.materials == key[0]) & (self.textures == key[1])
            groups[key] = self.indices[chosen]
        return groups


class Model:
    """A scenery model, from velmora.open or velmora.scan. Closed when collected, or by close()
    or a with block."""

    def __init__(self, handle, record=None):
        self._handle = handle
        # For a model of a compiled file: what `velmora scan --json` says of it.
        self.record = record

    def close(self, _close=lib.velmora_close):
        # The function is bound early: at the interpreter's exit the module may be gone first.
        if self._handle:
            _close(self._handle)
            self._handle = None

    def __del__(self):
        self.close()

    def __enter__(self):
        return self

    def __exit__(self, *exception):
        self.close()

    @property
    def handle(self):
        if not self._handle:
            raise ValueError("the model is closed")
        return self._handle

    def info(self):
        """The object that `velmora info --json` prints for the model."""
        return json.loads(_native.decoded(_given(lib.velmora_info_json(self.handle))))

    @property
    def commands(self):
        """The command stream as `velmora commands --json` gives it: a dict a command."""
        report = _native.decoded(_given(lib.velmora_commands_json(self.handle)))
        return json.loads(report)["commands"]

    @property
    def guard(self):
        """The guard of the guarded call as a formula; None for a model without one."""
        return self.info()["guard"]["formula"]

    def _vertices(self):
        count = _native.ctypes.c_size_t()
        table = _given(lib.velmora_vertices(self.handle, _native.ctypes.byref(count)))
        return _array(table, count.value, 8, numpy.float32)

    @property
    def positions(self):
        """The vertex table's positions, N×3 float32, in the model's axes."""
        return self._vertices()[:, 0:3].copy()

    @property
    def normals(self):
        return self._vertices()[:, 3:6].copy()

    @property
    def uvs(self):
        """The vertex table's texture coordinates (tx, ty), N×2 float32."""
        return self._vertices()[:, 6:8].copy()

    def geometry(self, day=0):
        """What the walk draws: every part for day 0, else what shows on that day (1 to 366)."""
        return Geometry(_given(lib.velmora_walk(self.handle, day)))

    def _said(self):
        return _native.decoded(lib.velmora_edit_said(self.handle)).splitlines()

    def edit(self, **options):
        """Edits the model in memory with the options of `velmora edit` by name, underscores for
        dashes: edit(condition=["between 798 2 5"], combine="or", add_kill_shadow=True,
        force=True). Gives what the edit did, a line each; raises Refused for a refused edit."""
        named = {name.replace("_", "-"): value for name, value in options.items()}
        _checked(lib.velmora_edit(self.handle, _native.encoded(json.dumps(named))))
        return self._said()

    def add_kill_shadow(self):
        _checked(lib.velmora_add_kill_shadow(self.handle))
        return self._said()

    def fix_lights(self):
        _checked(lib.velmora_fix_lights(self.handle))
        return self._said()

    def save(self, path):
        """Writes the model beside `path` and moves it into place when whole."""
        _checked(lib.velmora_save(self.handle, _native.encoded(path)))

    def export_gltf(self, path, textures=None, double_sided=False):
        """glTF 2.0: .glb, or .gltf with its files beside it; images looked up in `textures`."""
        _checked(lib.velmora_export_gltf(self.handle, _native.encoded(path),
                                         _native.encoded(textures), 1 if double_sided else 0))

    def export_flt(self, path, texture_extension="bmp", attribute_files=True):
        _checked(lib.velmora_export_flt(self.handle, _native.encoded(path),
                                        _native.encoded(texture_extension),
                                        1 if attribute_files else 0))

    def export_asm(self, path):
        _checked(lib.velmora_export_asm(self.handle, _native.encoded(path)))


def open(path):  # noqa: A001 - velmora.open, as the package's users call it
    """Loads a model file (.mdl); raises Error when it can't."""
    return Model(_given(lib.velmora_open(_native.encoded(path))))


def scan(path):
    """The models of a compiled scenery file (.bgl), each a Model whose `record` is what
    `velmora scan --json` says of it (guid, isft, guard, counts)."""
    handle = _given(lib.velmora_scan_open(_native.encoded(path)))
    try:
        records = json.loads(_native.decoded(lib.velmora_scan_json(handle)))
        return [Model(_given(lib.velmora_scan_model(handle, index)), records[index])
                for index in range(lib.velmora_scan_count(handle))]
    finally:
        lib.velmora_scan_close(handle)
