"""Readers against files written by hand: what they hold, and that faults have a place."""

import math
import os
import tempfile
import unittest

import numpy as np

import photrak


class Readers(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.folder = folder.name

    def write(self, name, text):
        path = os.path.join(self.folder, name)
        with open(path, "w", encoding="utf-8", newline="") as file:
            file.write(text)
        return path

    def test_plot_with_two_axes_and_gaps(self):
        self.write("rx_real.sig", "0 0.5 0.25\n1e-12 . -0.5\n2e-12 1\n3e-12 2 3")
        self.write("rx_bin.sig", "0 1\n1e-12 0\n")
        path = self.write(
            "rx.pcs",
            '/xl"Time (s)"\n/yl"Signal (Real)"\n/altyl"Binary Value"\n/tt"Rx "out" Plot"\n'
            "/lcm2,1,3\n/ls1\n/altw,,-0.1,1.1\nsub/rx_real.sig\nrx_bin.sig /alty\n"
            '/lt"<< \\# 1"\n/lt"&l = 1550 nm (x)"\n/lt">> \\# 2"\n/nx1\n',
        )
        plot = photrak.read(path)
        self.assertEqual(plot.title, 'Rx "out" Plot')
        self.assertEqual([c.label for c in plot.curves], ["#1", "λ = 1550 nm (x)", "#2"])
        self.assertEqual([c.second_axis for c in plot.curves], [False, False, True])
        np.testing.assert_array_equal(plot.curves[0].y, [0.5, math.nan, 1.0])
        np.testing.assert_array_equal(plot.curves[1].y, [0.25, -0.5, math.nan])
        np.testing.assert_array_equal(plot.curves[2].x, [0.0, 1e-12])
        self.assertFalse(plot.logarithmic)
        with self.assertRaises(ValueError):
            plot.y

    def test_ber_table_of_two_simulations(self):
        path = self.write(
            "t.bdt",
            "rx_power\tRUN#\tBER\tQ\n-3.0e+01\t1\t1e-03\t3\n-3.0e+01\t2\t3e-05\t4\n"
            "-3.0e+01\tMIN\t3e-05\t4\n-3.0e+01\tAVE\t5.15e-04\t3.5\n-3.0e+01\tMAX\t1e-03\t3\n"
            "BER\tQ\n1\t1e-09\t6\n",
        )
        scan, single = photrak.read(path)
        np.testing.assert_array_equal(scan.sweeps["rx_power"], [-30, -30])
        np.testing.assert_array_equal(scan.run, [1, 2])
        np.testing.assert_array_equal(scan.BER, [1e-3, 3e-5])
        self.assertEqual(scan.statistics["AVE"].Q[0], 3.5)
        self.assertEqual((single.sweeps, single.statistics), ({}, {}))
        self.assertEqual((single.BER[0], single.Q[0]), (1e-9, 6.0))

    def test_signals_of_all_kinds(self):
        path = self.write(
            "s.sgd",
            "BEGINSIG\nSET 1\nINNERSWEEP 2\nOUTERSWEEP 1\nSTATRUN 1\nLOOP 0\n"
            "OpSigASE \nfstart 1.9e14\nfstep 1e9\nnoPoints 2\npowerSamples\n1e-18\n2e-18\nENDASE \n"
            "OpSigType \nwavelength 1.55e-06\ndomain TIMEDOMAIN\nbitRate 1e10\nnoPoints 2\n"
            "patternLength 1\ntStep 5e-11\nstartTime 1e-9\nRIN 1e-15\nEx_samples\n3+4j\n1e-5+-2e-5j\n"
            "Ey_samples\n0-1j\n0+0j\nENDOpSig\nENDSIG\n"
            "BEGINSIG\nElecSigType \nUnitType CURRENT\ndomain TIMEDOMAIN\nbitRate 1e10\n"
            "patternLength 1\ntStep 5e-11\nstartTime 0\nnoPoints 2\nelecSamples \n1.5\n-2\n"
            "sigmaSamples\n0.1\n0.2\nENDSIG\n"
            "BEGINSIG\nBinSigType \nbitRate 1e10\nstartTime 0\nnoPoints 3\nbitSequence \n1\n0\n1\n"
            "ENDSIG\n",
        )
        light, current, bits = photrak.read(path)
        self.assertEqual(light.place["INNERSWEEP"], 2)
        np.testing.assert_array_equal(light.noise[0].frequency, [1.9e14, 1.9e14 + 1e9])
        channel = light.channels[0]
        np.testing.assert_allclose(channel.power, [26.0, 5e-10], rtol=1e-14)
        np.testing.assert_allclose(channel.time, [1e-9, 1.05e-9], rtol=1e-15)
        self.assertEqual(current.electrical.unit, "CURRENT")
        np.testing.assert_array_equal(current.electrical.sigma, [0.1, 0.2])
        np.testing.assert_array_equal(bits.binary.bits, [1, 0, 1])

    def test_tables_while_they_are_written(self):
        csv = self.write("t.csv", 'point,"a,b",tester,BER,status\r\n1,0.1,"x ""y""",nan,ok\r\n2,0')
        table = photrak.read(csv)
        self.assertEqual(table["tester"][0], 'x "y"')
        self.assertEqual(table["point"].dtype.kind, "i")
        np.testing.assert_array_equal(table["a,b"], [0.1])
        self.assertTrue(math.isnan(table["BER"][0]))
        row = '{"point":1,"BER":%s,"tester":"7"}'
        whole = f"[\n{row % 'null'},\n{row % '-1e999'}\n]\n"
        for text in (whole, whole[:-4], whole[:-3] + ',\n{"point":3,"B'):
            table = photrak.read(self.write("t.json", text))
            count = 1 if text == whole[:-4] else 2
            np.testing.assert_array_equal(table["BER"], [math.nan, -math.inf][:count])
            self.assertEqual(table["tester"][0], "7")

    def test_faults_have_a_place(self):
        rows = [
            ("a.sig", "0 1\n0 x\n", "a.sig:2: 'x' is no number"),
            ("b.sig", "0\n0 1\n", "b.sig:2: 2 numbers"),
            ("c.bdt", "1\t2\n", "c.bdt:1: no header"),
            ("d.bdt", "BER\tQ\n1\t2\n", "d.bdt:2: 2 fields where 3 belong"),
            ("e.sgd", "BEGINSIG\nBinSigType\nnoPoints 9\nbitSequence\n1\n", "9 values"),
            ("f.sgd", "BEGINSIG\n", "ends inside"),
            ("g.sum", "Set = 1\n", "g.sum:1: "),
            ("h.csv", "a,b\r\n1\r\n", "row 2 has 1 fields"),
            ("i.json", "{}", "no array"),
            ("j.txt", "", "no result of Photrak"),
        ]
        for name, text, expected in rows:
            with self.subTest(name):
                with self.assertRaises(photrak.FormatError) as caught:
                    photrak.read(self.write(name, text))
                self.assertIn(expected, str(caught.exception))


if __name__ == "__main__":
    unittest.main()
