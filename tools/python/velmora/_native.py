"""The C interface of Velmora (velmora_c.h) through ctypes: the shared library and its functions."""

import ctypes
import ctypes.util
import os
import sys

_NAMES = {"win32": "velmora_c.dll", "darwin": "libvelmora_c.dylib"}


class Light(ctypes.Structure):
    _fields_ = [
        ("position", ctypes.c_float * 3),
        ("colour", ctypes.c_uint32),
        ("type", ctypes.c_int32),
        ("command", ctypes.c_int32),
    ]


def _library_path():
    """VELMORA_C_LIBRARY when set, else the library beside this package, else the system's."""
    given = os.environ.get("VELMORA_C_LIBRARY")
    if given:
        return given
    beside = os.path.join(os.path.dirname(os.path.abspath(__file__)),
                          _NAMES.get(sys.platform, "libvelmora_c.so"))
    if os.path.exists(beside):
        return beside
    found = ctypes.util.find_library("velmora_c")
    if found:
        return found
    raise ImportError("the Velmora C library (%s) is neither beside the velmora package nor "
                      "installed; set VELMORA_C_LIBRARY to its path" % os.path.basename(beside))


_model = ctypes.c_void_p
_text = ctypes.c_char_p
_int = ctypes.c_int
_size = ctypes.c_size_t
_floats = ctypes.POINTER(ctypes.c_float)
_int32s = ctypes.POINTER(ctypes.c_int32)
_uint32s = ctypes.POINTER(ctypes.c_uint32)

# name: (result, arguments)
_SIGNATURES = {
    "velmora_version": (_text, []),
    "velmora_last_error": (_text, []),
    "velmora_last_error_number": (_int, []),
    "velmora_last_error_json": (_text, []),
    "velmora_open": (_model, [_text]),
    "velmora_close": (None, [_model]),
    "velmora_save": (_int, [_model, _text]),
    "velmora_info_json": (_text, [_model]),
    "velmora_commands_json": (_text, [_model]),
    "velmora_vertices": (_floats, [_model, ctypes.POINTER(_size)]),
    "velmora_edit": (_int, [_model, _text]),
    "velmora_add_kill_shadow": (_int, [_model]),
    "velmora_fix_lights": (_int, [_model]),
    "velmora_edit_said": (_text, [_model]),
    "velmora_export_gltf": (_int, [_model, _text, _text, _int]),
    "velmora_export_flt": (_int, [_model, _text, _text, _int]),
    "velmora_export_asm": (_int, [_model, _text]),
    "velmora_walk": (ctypes.c_void_p, [_model, _int]),
    "velmora_geometry_close": (None, [ctypes.c_void_p]),
    "velmora_geometry_corner_count": (_size, [ctypes.c_void_p]),
    "velmora_geometry_positions": (_floats, [ctypes.c_void_p]),
    "velmora_geometry_normals": (_floats, [ctypes.c_void_p]),
    "velmora_geometry_uvs": (_floats, [ctypes.c_void_p]),
    "velmora_geometry_triangle_count": (_size, [ctypes.c_void_p]),
    "velmora_geometry_indices": (_uint32s, [ctypes.c_void_p]),
    "velmora_geometry_materials": (_int32s, [ctypes.c_void_p]),
    "velmora_geometry_textures": (_int32s, [ctypes.c_void_p]),
    "velmora_geometry_commands": (_int32s, [ctypes.c_void_p]),
    "velmora_geometry_surface_commands": (_int32s, [ctypes.c_void_p]),
    "velmora_geometry_material_count": (_size, [ctypes.c_void_p]),
    "velmora_geometry_material_values": (_floats, [ctypes.c_void_p]),
    "velmora_geometry_light_count": (_size, [ctypes.c_void_p]),
    "velmora_geometry_lights": (ctypes.POINTER(Light), [ctypes.c_void_p]),
    "velmora_scan_open": (ctypes.c_void_p, [_text]),
    "velmora_scan_close": (None, [ctypes.c_void_p]),
    "velmora_scan_json": (_text, [ctypes.c_void_p]),
    "velmora_scan_count": (_int, [ctypes.c_void_p]),
    "velmora_scan_model": (_model, [ctypes.c_void_p, _int]),
}

# The codes of the functions that give an int.
OK, FAILED, REFUSED, BAD_ARGUMENT = 0, 1, 2, 3

lib = ctypes.CDLL(_library_path())
for _name, (_result, _arguments) in _SIGNATURES.items():
    _function = getattr(lib, _name)
    _function.restype = _result
    _function.argtypes = _arguments


def encoded(text):
    """A str or path as the library takes texts: UTF-8 bytes; None stays None."""
    return None if text is None else os.fsdecode(text).encode("utf-8")


def decoded(raw):
    return raw.decode("utf-8", "replace")
