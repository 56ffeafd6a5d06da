"""The program as functions, and every file that the examples leave through the readers."""

import json
import os
import shutil
import subprocess
import sys
import tempfile
import unittest
import warnings
from pathlib import Path

import numpy as np

import photrak

TREE = Path(__file__).resolve().parents[2]


class Program(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.folder = Path(folder.name)

    def example(self, name):
        return Path(shutil.copy(TREE / "examples" / name, self.folder))

    def test_a_scan_is_its_bdt_with_all_digits(self):
        outcome = photrak.scan(
            self.example("ber-power.top"),
            inner=("received", np.float64(-22.0), -18, 2.0),
            out=self.folder / "out",
        )
        table = outcome.table
        np.testing.assert_array_equal(table["received"], [-22.0, -20.0, -18.0])
        bdt = next(name for name in outcome.files if name.endswith(".bdt"))
        (simulation,) = photrak.read(bdt)
        np.testing.assert_allclose(table["BER"], simulation.BER, rtol=1e-6)
        np.testing.assert_allclose(table["Q"], simulation.Q, rtol=1e-5)
        curve = photrak.read(next(name for name in outcome.files if name.endswith(".pcb")))
        np.testing.assert_allclose(curve.curves[0].y, table["BER"], rtol=1e-5)
        self.assertTrue(curve.logarithmic)
        self.assertEqual(curve.x_label, "received")
        self.assertEqual(outcome.testers[0]["BER"], table["BER"][-1])

    def test_runs_take_symbols_and_tell_what_is_wrong(self):
        topology = self.example("nrz-link.top")
        outcome = photrak.run(topology, set={"length": 20e3, "launch": "2*0.5e-3"}, out=self.folder)
        self.assertEqual((outcome.status, outcome.document["schema"]), (0, "photrak.run/1"))
        with self.assertRaises(photrak.PhotrakError) as caught:
            photrak.run(topology, set={"lenght": 20e3})
        self.assertEqual(caught.exception.status, 1)
        self.assertEqual(caught.exception.diagnostics[0]["code"], "P1305")
        self.assertIn("lenght", str(caught.exception))
        failed = photrak.run(topology, options=["--bogus"], check=False)
        self.assertEqual((failed.status, failed.table), (64, {}))

    def test_measures_are_those_of_the_saved_signal(self):
        """The file of a SaveSigBlock, measured here."""
        topology = self.example("save-signal.top")
        outcome = photrak.run(topology, out=self.folder)
        saved = next(name for name in outcome.files if name.endswith(".sgd"))
        (group,) = photrak.read(saved)
        channel = group.channels[0]
        block = next(
            block for block in topology.read_text().split("COMPONENT ") if "SaveSigBlock" in block
        )
        node = next(line.split()[1] for line in block.splitlines() if line.startswith("INPUTFROM"))
        measured = photrak.measure(topology, node, out=self.folder)
        np.testing.assert_allclose(measured.table["average"], channel.power.mean(), rtol=1e-12)
        np.testing.assert_allclose(measured.table["peak"], channel.power.max(), rtol=1e-12)
        summary = photrak.read(next(name for name in measured.files if name.endswith(".sum")))[0]
        self.assertEqual(summary.kind, "optical")
        self.assertAlmostEqual(summary.values["Average"] / channel.power.mean(), 1.0, places=5)
        self.assertEqual(summary.units["Average"], "W")

    def test_every_file_of_the_examples_can_be_read(self):
        shutil.copytree(TREE / "examples", self.folder / "in")
        seen = set()
        for name in ("eye-10g", "osa-wdm8", "direct-laser", "first-bits", "statistical"):
            topology = self.folder / "in" / f"{name}.top"
            with warnings.catch_warnings():
                warnings.simplefilter("ignore", photrak.PhotrakWarning)
                outcome = photrak.run(topology, out=self.folder / name)
            for path in outcome.files:
                with self.subTest(path):
                    self.assertIsNotNone(photrak.read(path))
                seen.add(os.path.splitext(path)[1])
        self.assertLessEqual({".pcs", ".sig", ".pce", ".eye", ".pcf", ".frq", ".bdt"}, seen)
        eye = photrak.read(self.folder / "eye-10g" / "eye-sent.pce")
        self.assertEqual(len(eye.curves), 123)
        spectrum = photrak.read(self.folder / "osa-wdm8" / "osa-line.pcf")
        self.assertEqual([c.label for c in spectrum.curves], ["Signal + noise", "Noise"])
        # 29.7 dB against the noise of both polarizations, 32.7 dB against that of one
        above = spectrum.curves[0].y - spectrum.curves[1].y
        self.assertAlmostEqual(above.max(), 32.7, delta=0.3)

    def test_laser_figures_and_curve(self):
        topology = self.example("direct-laser.top")
        words = ["test", "--out", str(self.folder), "Laser", str(topology)]
        subprocess.run([photrak.find_program(), *words], check=True, capture_output=True)
        figures = photrak.read(self.folder / "lasertest.dat")
        threshold, unit = figures["Threshold current"]
        self.assertEqual(unit, "mA")
        curve = photrak.read(self.folder / "licurve.pcl")
        self.assertEqual(curve.x_label, "Current (A)")
        dark = curve.y[curve.x < 0.9e-3 * threshold]
        self.assertLess(dark.max(), 0.05 * curve.y.max())

    def test_the_example_draws_the_waterfall(self):
        picture = self.folder / "waterfall.svg"
        script = TREE / "python" / "examples" / "ber_waterfall.py"
        words = [sys.executable, "-B", str(script), str(picture)]
        done = subprocess.run(words, capture_output=True, text=True, cwd=self.folder)
        self.assertEqual(done.returncode, 0, done.stderr)
        self.assertIn("km:", done.stdout)
        self.assertIn("<svg", picture.read_text()[:2000])

    def test_pandas_reads_the_tables(self):
        try:
            import pandas
        except ImportError:
            self.skipTest("pandas is not installed")
        topology = self.example("ber-power.top")
        base = [photrak.find_program(), "scan", "--quiet", "--no-commands", "--plotting", "none"]
        for name, read in (("t.csv", pandas.read_csv), ("t.json", pandas.read_json)):
            path = self.folder / name
            subprocess.run([*base, "--table", path, topology], check=True, capture_output=True)
            frame, table = read(path), photrak.read(path)
            self.assertEqual(list(frame.columns), list(table))
            np.testing.assert_allclose(frame["BER"], table["BER"], rtol=1e-15)
            self.assertEqual(frame["point"].dtype.kind, "i")

    def test_documents_are_json_whatever_happens(self):
        topology = self.example("nrz-link.top")
        for words in (["run", "absent.top"], ["run", "--bogus"], ["scan", str(topology)], ["check"]):
            command = [photrak.find_program(), *words, "--json"]
            done = subprocess.run(command, capture_output=True, text=True, cwd=self.folder)
            document = json.loads(done.stdout)
            self.assertEqual(document["schema"], f"photrak.{words[0]}/1")
            self.assertEqual(document["status"], done.returncode)


if __name__ == "__main__":
    unittest.main()
