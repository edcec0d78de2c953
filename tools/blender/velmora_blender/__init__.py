"""Imports flight-simulator scenery models (.mdl) and the models of compiled scenery (.bgl)."""

bl_info = {
    "name": "Velmora scenery models",
    "author": "The Velmora developers",
    "version": (0, 0, 335),
    "blender": (3, 4, 0),
    "location": "File > Import > Scenery model (.mdl), Compiled scenery (.bgl)",
    "description": "Imports scenery models and the models of compiled scenery files, with their "
                   "materials, textures, seasons, size branches and lights",
    "category": "Import-Export",
}

import bpy
from bpy.props import StringProperty
from bpy_extras.io_utils import ImportHelper

from . import importer
from .velmora import Error


class _Import(ImportHelper):
    texture_folder: StringProperty(
        name="Textures",
        description="A folder to look for the texture images in first (beside the model and in "
                    "its texture or textures folder otherwise)",
        subtype="DIR_PATH",
    )

    def execute(self, context):
        try:
            for warning in self.run(context):
                self.report({"WARNING"}, warning)
        except Error as error:
            self.report({"ERROR"}, str(error))
            return {"CANCELLED"}
        return {"FINISHED"}


class ImportModel(bpy.types.Operator, _Import):
    """Import a scenery model (.mdl)"""
    bl_idname = "import_scene.velmora_mdl"
    bl_label = "Import Scenery Model"
    bl_options = {"REGISTER", "UNDO"}
    filename_ext = ".mdl"
    filter_glob: StringProperty(default="*.mdl", options={"HIDDEN"})

    def run(self, context):
        return importer.import_model_file(context, self.filepath, self.texture_folder)


class ImportCompiled(bpy.types.Operator, _Import):
    """Import the models of a compiled scenery file (.bgl)"""
    bl_idname = "import_scene.velmora_bgl"
    bl_label = "Import Compiled Scenery"
    bl_options = {"REGISTER", "UNDO"}
    filename_ext = ".bgl"
    filter_glob: StringProperty(default="*.bgl", options={"HIDDEN"})

    def run(self, context):
        return importer.import_compiled_file(context, self.filepath, self.texture_folder)


def _menu(self, context):
    self.layout.operator(ImportModel.bl_idname, text="Scenery model (.mdl)")
    self.layout.operator(ImportCompiled.bl_idname, text="Compiled scenery (.bgl)")


def register():
    bpy.utils.register_class(ImportModel)
    bpy.utils.register_class(ImportCompiled)
    bpy.types.TOPBAR_MT_file_import.append(_menu)


def unregister():
    bpy.types.TOPBAR_MT_file_import.remove(_menu)
    bpy.utils.unregister_class(ImportCompiled)
    bpy.utils.unregister_class(ImportModel)
