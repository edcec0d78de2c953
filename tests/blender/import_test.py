"""The Blender add-on, run inside Blender without a window:
    blender -b --factory-startup --python-exit-code 1 --python import_test.py -- ADDON.zip WORK
It installs and enables the add-on from its zip, then imports fresh samples (made by
$VELMORA_MAKE_SAMPLES into WORK) with its operators."""

import os
import subprocess
import sys
import unittest

import bpy
from mathutils import Vector

ADDON, WORK = sys.argv[sys.argv.index("--") + 1:][:2]
SAMPLES = os.path.join(WORK, "samples")


def model_front(corners):
    """The front of a triangle by the library's rule, (c - a) x (b - a) in the model's axes."""
    a, b, c = (Vector(corner) for corner in corners)
    return (c - a).cross(b - a)


def rounded(vector, swap=False):
    """A direction of unit length to three places, in Blender's axes where `swap` maps the model's
    (x, y, z) to them as (x, z, y); +0.0 for -0.0."""
    unit = Vector(vector).normalized()
    if swap:
        unit = Vector((unit.x, unit.z, unit.y))
    return tuple(round(v, 3) + 0.0 for v in unit)


class ImportTest(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        subprocess.run([os.environ["VELMORA_MAKE_SAMPLES"], SAMPLES], check=True,
                       stdout=subprocess.DEVNULL)
        bpy.ops.preferences.addon_install(filepath=ADDON)
        bpy.ops.preferences.addon_enable(module="velmora_blender")

    def setUp(self):
        bpy.ops.wm.read_factory_settings(use_empty=True)
        bpy.ops.preferences.addon_enable(module="velmora_blender")

    def test_the_building_with_its_images_faces_and_seasons(self):
        result = bpy.ops.import_scene.velmora_mdl(filepath=os.path.join(SAMPLES, "building.mdl"))
        self.assertEqual(result, {"FINISHED"})
        images = {image.name for image in bpy.data.images if image.filepath}
        self.assertGreaterEqual(len(images), 2)
        self.assertIn("wall_winter.bmp", images)
        meshes = [o for o in bpy.data.objects if o.type == "MESH"]
        for mesh in (o.data for o in meshes):
            mesh.calc_normals_split()
            for polygon in mesh.polygons:
                for loop in polygon.loop_indices:
                    self.assertGreater(polygon.normal.dot(mesh.loops[loop].normal), 0.5,
                                       "%s polygon %d" % (mesh.name, polygon.index))
        # Blender's front is the library's, taken through the axes (x, y, z) -> (x, z, y).
        from velmora_blender import velmora
        model = velmora.open(os.path.join(SAMPLES, "building.mdl"))
        geometry = model.geometry()
        fronts = sorted(rounded(model_front([geometry.positions[i] for i in corners]), swap=True)
                        for corners in geometry.indices)
        polygons = sorted(rounded(polygon.normal)
                          for shown in meshes if not shown.hide_render
                          for polygon in shown.data.polygons)
        self.assertEqual(len(polygons), len(fronts))
        self.assertEqual(polygons, fronts)
        # Z up: the model's height is Blender's.
        top = max(vertex.co.z for shown in meshes for vertex in shown.data.vertices)
        self.assertAlmostEqual(top, float(model.positions[:, 1].max()), places=4)
        building = bpy.data.collections["building"]
        self.assertEqual(building["velmora_guard"], "798 in 2..5")
        seasons = building.children["building seasons 1"].objects
        self.assertEqual(sorted(o.name for o in seasons if not o.hide_render),
                         ["building wall_summer.bmp (days 60-300)"])
        self.assertEqual(len(seasons), 2)

    def test_the_three_models_of_the_compiled_file_with_lights(self):
        result = bpy.ops.import_scene.velmora_bgl(filepath=os.path.join(SAMPLES, "scenery.bgl"))
        self.assertEqual(result, {"FINISHED"})
        models = bpy.data.collections["scenery"].children
        self.assertEqual(len(models), 3)
        self.assertEqual(models[0]["velmora_isft"], "Velmora sample")
        self.assertTrue(models[0]["velmora_guid"].startswith("{4E3D2C1B"))
        lights = [o for o in models[1].objects if o.type == "LIGHT"]
        self.assertEqual(len(lights), 4)
        self.assertAlmostEqual(lights[0].location.z, 1.0)


# Blender exits with 1 (--python-exit-code) when the script raises.
if not unittest.main(argv=["import_test"], exit=False).result.wasSuccessful():
    raise RuntimeError("the add-on's tests failed")
