"""The Python package on the C interface, checked against the velmora tool on fresh samples."""

import json
import os
import shutil
import subprocess
import tempfile
import unittest

import velmora

TOOL = os.environ["VELMORA_TOOL"]


class Samples(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.folder = tempfile.mkdtemp(prefix="velmora-python-")
        subprocess.run([os.environ["VELMORA_MAKE_SAMPLES"], cls.folder], check=True,
                       stdout=subprocess.DEVNULL)

    @classmethod
    def tearDownClass(cls):
        shutil.rmtree(cls.folder)

    def path(self, name):
        return os.path.join(self.folder, name)

    def tool_json(self, *words):
        done = subprocess.run([TOOL, *words, "--json"], check=True, capture_output=True)
        return json.loads(done.stdout)


class ModelTest(Samples):
    def test_info_is_the_tools_and_the_tables_are_arrays(self):
        path = self.path("building.mdl")
        with velmora.open(path) as model:
            self.assertEqual(model.info(), self.tool_json("info", path))
            self.assertEqual(model.positions.shape, (30, 3))
            self.assertEqual(model.uvs.shape, (30, 2))
            self.assertEqual(str(model.positions.dtype), "float32")
            self.assertEqual(model.commands, self.tool_json("commands", path)["commands"])
            self.assertEqual(model.guard, "798 in 2..5")
            geometry = model.geometry()
            self.assertEqual(geometry.indices.shape, (14, 3))
            self.assertEqual(sorted(geometry.by_material()), [(0, 1), (1, 2)])

    def test_an_edit_saved_is_read_back_by_the_tool(self):
        edited = self.path("edited.mdl")
        with velmora.open(self.path("building.mdl")) as model:
            self.assertEqual(model.add_kill_shadow(), ["kill shadow added"])
            model.edit(condition=["between 652 1 1"], combine="and", fix_lights=True)
            model.save(edited)
        info = self.tool_json("info", edited)
        self.assertTrue(info["killShadow"])
        self.assertEqual(info["guard"]["formula"], "798 in 2..5 and 652 in 1..1")

    def test_exports_are_written_whole(self):
        with velmora.open(self.path("building.mdl")) as model:
            model.export_gltf(self.path("building.glb"), textures=self.path("textures"))
            model.export_asm(self.path("building.asm"))
        with open(self.path("building.glb"), "rb") as glb:
            self.assertEqual(glb.read(4), b"glTF")
        self.assertGreater(os.path.getsize(self.path("building.asm")), 0)
        self.assertEqual([n for n in os.listdir(self.folder) if n.startswith(".velmora")], [])


class FailureTest(Samples):
    def test_a_damaged_file_raises_error_with_its_number_and_name(self):
        damaged = self.path("damaged.mdl")
        with open(self.path("building.mdl"), "rb") as whole, open(damaged, "wb") as part:
            part.write(whole.read(40))
        with self.assertRaises(velmora.Error) as raised:
            velmora.open(damaged)
        error = raised.exception
        self.assertNotIsInstance(error, velmora.Refused)
        self.assertIn(error.number, (5, 9, 100))
        self.assertEqual(error.file, damaged)
        self.assertIn(damaged, str(error))
        self.assertTrue(error.source.startswith("Velmora"))
        self.assertTrue(error.description)

    def test_a_refused_edit_raises_refused_in_the_tools_words(self):
        path = self.path("building.mdl")
        never = "between 798 6 9"  # beside the model's 798 in 2..5
        tool = subprocess.run([TOOL, "edit", path, "--condition", never], capture_output=True,
                              text=True)
        with velmora.open(path) as model:
            with self.assertRaises(velmora.Refused) as raised:
                model.edit(condition=[never])
            self.assertEqual(tool.stderr, "velmora edit: %s\n" % raised.exception)
            self.assertEqual(raised.exception.number, 100)
            model.edit(condition=[never], force=True)

    def test_options_the_edit_doesnt_know_are_errors(self):
        with velmora.open(self.path("building.mdl")) as model:
            for options in ({"no_such_option": True}, {"combine": "xor"}, {"condition": 5}):
                with self.assertRaises(velmora.Error) as raised:
                    model.edit(**options)
                self.assertEqual(raised.exception.number, 5)


class CompiledTest(Samples):
    def test_the_three_models_of_the_compiled_sample(self):
        path = self.path("scenery.bgl")
        models = velmora.scan(path)
        done = subprocess.run([TOOL, "scan", path, "--json"], check=True, capture_output=True)
        self.assertEqual([m.record for m in models],
                         [json.loads(line) for line in done.stdout.splitlines()])
        self.assertEqual([m.info()["counts"]["vertices"] for m in models], [30, 4, 4])
        self.assertEqual(len(models[1].geometry().lights), 4)


if __name__ == "__main__":
    unittest.main()
