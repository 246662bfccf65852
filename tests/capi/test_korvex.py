"""The Python host's tests: run with KORVEX_LIBRARY naming libkorvex.so."""
import datetime
import decimal
import os
import sqlite3
import tempfile
import threading
import unittest

import korvex


class PythonHost(unittest.TestCase):
    def test_values_round_trip_as_python_types(self):
        when = datetime.datetime(2025, 3, 31, 17, 30, 5)
        cases = [(None, None), (True, True), (7, 7), (-2**31, -2**31), (2**40, float(2**40)),
                 (2.5, 2.5), (decimal.Decimal("123.4567"), decimal.Decimal("123.4567")),
                 (when, when), (datetime.date(1899, 12, 29), datetime.datetime(1899, 12, 29)),
                 ("实发工资", "实发工资"), ("", "")]
        with korvex.Engine() as e:
            for value, expected in cases:
                with self.subTest(value=value):
                    e["v"] = value
                    self.assertTrue(e.run("DIM w\r\nw = v\r\n").ok)
                    got = e["w"]
                    self.assertEqual((got, type(got)), (expected, type(expected)))
                    e.clear()
            self.assertRaises(KeyError, e.__getitem__, "nope")
            self.assertRaises(TypeError, e.__setitem__, "v", {1})

    def test_wage_on_a_record_with_a_host_function(self):
        with tempfile.TemporaryDirectory() as d:
            path = os.path.join(d, "pay.db")
            with sqlite3.connect(path) as db:
                db.execute("CREATE TABLE 工资 (工号 INTEGER, 基本工资 REAL)")
                db.execute("INSERT INTO 工资 VALUES (1, 2000), (2, 3000)")
            boxes, asked = [], []
            with korvex.Engine() as e:
                e.open_database(path)
                e.bind_record("SELECT * FROM 工资 WHERE 工号 = 2")
                e.register_function("_津贴", lambda base: base / 10, 1, 1)
                e.register_function("_坏", lambda: 1 / 0)
                e.register_function("_拒", self._refuse)
                e.set_user_interface(lambda t, yn, h: boxes.append(t) or True,
                                     lambda p, h, d: asked.append(p) or "8")
                e["奖金"] = decimal.Decimal("0.5")
                out = e.run("DIM 实发, 工时\r\n工时 = CLng(Input(\"工时?\"))\r\n"
                            "实发 = 基本工资 + _津贴(基本工资) + 奖金\r\nMSGBOX 实发\r\n")
                self.assertTrue(out.ok, out.message)
                self.assertEqual((e["实发"], e["工时"]), (3300.5, 8))
                self.assertEqual((boxes, asked), (["3300.5"], ["工时?"]))
                for call, number, message in [("_坏()", 51, "division by zero : 行号 2"),
                                              ("_拒()", 2000, "不许 : 行号 2")]:
                    out = e.run(f"DIM x\r\nx = {call}\r\n")
                    self.assertEqual((out.error_number, out.message), (number, message))
                with self.assertRaises(korvex.KorvexError):
                    e.bind_record("DELETE FROM 工资")
                e.clear()
                self.assertRaises(KeyError, e.__getitem__, "实发")

    @staticmethod
    def _refuse():
        raise korvex.ScriptError(2000, "不许")

    def test_limits_and_requests_stop_a_runaway_script(self):
        endless = "DIM n\r\nn = 0\r\nDo While 1\r\nn = n + 1\r\nLoop\r\n"
        with korvex.Engine() as e:
            for limits, reason in [((50, 0), "step limit"), ((0, 30), "time limit")]:
                e.set_limits(*limits)
                out = e.run(endless)
                self.assertEqual((out.error_number, out.stop_reason), (0, reason))
            e.set_limits(0, 0)
            e.set_line_hook(lambda line: line < 4)
            self.assertEqual(e.run(endless).stop_reason, "line hook")
            e.set_line_hook(None)
            timer = threading.Timer(0.05, e.request_stop)
            timer.start()
            out = e.run(endless)
            timer.join()
            self.assertEqual(out.stop_reason, "request")
            self.assertGreater(e["n"], 10)

    def test_lists_go_in_and_come_out_as_arrays(self):
        grid = [[1, "甲", None], [2.5, True, "乙"]]
        with korvex.Engine() as e:
            e["表"] = grid
            self.assertTrue(e.run("DIM u\r\nu = UBound(表, 2)\r\n").ok)
            self.assertEqual((e["u"], e["表"]), (2, grid))
            with self.assertRaises(ValueError):
                e["坏"] = [[1, 2], [3]]

    def test_a_batch_writes_the_rows_that_succeed(self):
        with tempfile.TemporaryDirectory() as folder:
            path = os.path.join(folder, "pay.db")
            with sqlite3.connect(path) as db:
                db.executescript("CREATE TABLE pay (code TEXT PRIMARY KEY, pieces INT, wage REAL);"
                                 "INSERT INTO pay VALUES ('E1', 10, 0), ('E2', -1, 0), ('E3', 30, 0)")
            script = 'If pieces < 0 Then RaiseError "负数"\r\nwage = pieces * 2.5\r\n'
            with self.assertRaises(korvex.KorvexError):
                korvex.run_batch(path, "UPDATE pay SET wage = 1", script)
            s = korvex.run_batch(path, "SELECT * FROM pay", script, jobs=2)
            self.assertEqual((s["rows"], s["failed"], s["changed_fields"], s["committed"]),
                             (3, 1, 2, True))
            self.assertEqual(s["failures"][0][:3], (2, 2000, 1))
            with sqlite3.connect(path) as db:
                wages = db.execute("SELECT code, wage FROM pay ORDER BY code").fetchall()
            self.assertEqual(wages, [("E1", 25.0), ("E2", 0.0), ("E3", 75.0)])


if __name__ == "__main__":
    unittest.main()
