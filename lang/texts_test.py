#!/usr/bin/env python3
"""Tests of texts.py: what it finds in sources and what its check refuses."""
import os
import subprocess
import sys
import tempfile
import textwrap
import unittest

sys.path.insert(0, os.path.dirname(os.path.abspath(__file__)))
import texts  # noqa: E402

SCRIPT = os.path.join(os.path.dirname(os.path.abspath(__file__)), "texts.py")


class TextsTest(unittest.TestCase):
    def setUp(self):
        self.work = tempfile.TemporaryDirectory()
        self.root = self.work.name
        self.write("run/driver.h", "static constexpr std::int32_t NoFileText = 143;\n")
        self.write("run/driver.cpp", textwrap.dedent('''\
            QString a = text(NoFileText, "No file selected.");
            QString b = text(165, "Task finished "
                                  "with errors.");
            // text(999, "a comment is no text")
            const ColumnSpec Version{120, "Version", 1, Field::Version};
            const QString Section = QStringLiteral("RefDlg");
            QString c = translator.text(123, QStringLiteral("Referenced version"), Section);
            QString d = lookupText(m_text, 6, "Select a folder:");
            '''))
        self.write("print/page.cpp", 'QString e = text(6, "Please select a folder:");\n')
        self.write("common/widgets/icons.cpp", '{121, "text-x-preview"},\n')
        self.write("run/driver_test.cpp", 'text(777, "tests ask for anything");\n')
        self.recorded = self.write("rec.tsv", "\n".join([
            "McTaskAddIn\tMenuCommandDlg\tdisplayCheck\tDisplay a menu command",
            "McTaskAddIn\tMenuCommandDlg\tmoreButton\t>",  # no words: the same in every language
            "McTaskAddIn\tTS\t143\tNo file selected.",
            "OtherModule\tX\ty\tnot ours",
        ]) + "\n")

    def tearDown(self):
        self.work.cleanup()

    def write(self, path, text):
        full = os.path.join(self.root, path)
        os.makedirs(os.path.dirname(full), exist_ok=True)
        with open(full, "w", encoding="utf-8") as f:
            f.write(text)
        return full

    def check(self, *ts):
        return subprocess.run([sys.executable, SCRIPT, "check", "--source", self.root, "--recorded", self.recorded]
                              + list(ts), capture_output=True, text=True)

    def test_finds_numbered_texts_in_their_forms_and_dialog_texts_from_the_windows(self):
        found, errors = texts.catalogue(self.root, self.recorded)
        self.assertEqual(errors, [])
        self.assertEqual(found, {
            "TS.143": "No file selected.",
            "TS.165": "Task finished with errors.",
            "TS.120": "Version",
            "RefDlg.123": "Referenced version",
            "TS.6": "Please select a folder:",  # the first of its two wordings
            "MenuCommandDlg.displayCheck": "Display a menu command",
        })

    def test_one_number_with_two_texts_or_a_window_text_the_sources_lack_is_an_error(self):
        self.write("print/other.cpp", 'QString f = text(143, "Nothing selected.");\n')
        with open(self.recorded, "a", encoding="utf-8") as f:
            f.write("McTaskAddIn\tTS\t144\tNo file converted.\n")
        _, errors = texts.catalogue(self.root, self.recorded)
        self.assertTrue(any("text TS.143 is 'No file selected.' here but 'Nothing selected.'" in e for e in errors), errors)
        self.assertTrue(any("the windows ask for TS.144 'No file converted.'" in e for e in errors), errors)

    def test_update_keeps_translations_and_check_refuses_what_is_missing_unused_changed_or_unfinished(self):
        found, _ = texts.catalogue(self.root, self.recorded)
        de = os.path.join(self.root, "de.ts")
        texts.write_ts(de, "de_DE", found, {})
        self.assertEqual(self.check(de).returncode, 1)  # nothing translated yet
        _, messages = texts.read_ts(de)
        self.assertTrue(all(not finished for _, _, finished in messages.values()))

        translated = {i: (found[i], "de:" + found[i], True) for i in found}
        texts.write_ts(de, "de_DE", found, translated)
        result = self.check(de)
        self.assertEqual(result.returncode, 0, result.stdout + result.stderr)

        # The code drops one text, changes another and adds a third.
        less = dict(found)
        del less["TS.120"]
        texts.write_ts(de, "de_DE", dict(less, **{"TS.999": "Obsolete"}), translated)
        with open(os.path.join(self.root, "run/driver.cpp"), encoding="utf-8") as f:
            self.write("run/driver.cpp", f.read().replace("No file selected.", "No file chosen."))
        with open(self.recorded, "a", encoding="utf-8") as f:
            f.write("McTaskAddIn\tTS\t143\tNo file chosen.\n")
        result = self.check(de)
        self.assertEqual(result.returncode, 1)
        self.assertIn("lacks TS.120", result.stdout)
        self.assertIn("has TS.999, which the code no longer uses", result.stdout)
        self.assertIn("the English of TS.143 is now 'No file chosen.'", result.stdout)

        # Updating keeps the untouched translations and marks the changed text unfinished.
        now, _ = texts.catalogue(self.root, self.recorded)
        _, old = texts.read_ts(de)
        texts.write_ts(de, "de_DE", now, old)
        _, messages = texts.read_ts(de)
        self.assertEqual(messages["TS.165"], ("Task finished with errors.", "de:Task finished with errors.", True))
        self.assertEqual(messages["TS.143"][2], False)
        self.assertNotIn("TS.999", messages)


if __name__ == "__main__":
    unittest.main()
