#!/usr/bin/env python3
"""Plants each fault that tools/check_floors.py is there to find, and a house without any."""

import sys
import tempfile
import unittest
from pathlib import Path

sys.dont_write_bytecode = True
sys.path.insert(0, str(Path(__file__).resolve().parents[2] / "tools"))
from check_floors import check  # noqa: E402


class CheckFloorsTest(unittest.TestCase):
    def faults(self, files):
        """What the check finds in a repository with a sound house and the given files."""
        house = {
            "include/zeb/types.h": "#include <stdint.h>\n",
            "include/zeb/zeb.h": '#include "zeb/types.h"\n',
            "include/zeb/sdk/library.hpp": '#include "zeb/zeb.h"\n',
            "src/util/list.h": "",
            "src/base/object.h": '#include "util/list.h"\n#include "zeb/types.h"\n',
            "src/memory/pool.h": '#include "base/object.h"\n',
            "src/memory/detail/page.h": "",
            "src/memory/pool.cpp": '#include "memory/detail/page.h"\n#include "pool.h"\n',
            "src/errors/raise.h": '#include "memory/pool.h"\n',
            "src/events/counter.h": '#include "errors/raise.h"\n',
            "src/frame/start.cpp": '#include "events/counter.h"\n#include <vector>\n',
            "tests/memory/page_test.cpp": '#include "memory/detail/page.h"\n',
            "tests/contract/start_test.cpp": '#include "zeb/zeb.h"\n',
        }
        with tempfile.TemporaryDirectory() as root:
            for name, text in {**house, **files}.items():
                path = Path(root, name)
                path.parent.mkdir(parents=True, exist_ok=True)
                path.write_text(text, encoding="utf-8")
            return "\n".join(check(root))

    def test_accepts_a_sound_house(self):
        self.assertEqual(self.faults({}), "")

    def test_rejects_an_arrow_that_runs_up(self):
        found = self.faults({"src/util/text.h": '#include "memory/pool.h"\n'})
        self.assertIn("src/util/text.h: floor 0 includes src/memory/pool.h on floor 1", found)

    def test_rejects_an_arrow_that_runs_up_in_angle_brackets(self):
        found = self.faults({"src/util/text.h": "#  include <memory/pool.h>\n"})
        self.assertIn("src/util/text.h: floor 0 includes src/memory/pool.h on floor 1", found)

    def test_rejects_an_arrow_that_runs_up_by_a_relative_path(self):
        found = self.faults({"src/util/text.h": '#include "../memory/pool.h"\n'})
        self.assertIn("src/util/text.h: floor 0 includes src/memory/pool.h on floor 1", found)

    def test_rejects_a_cycle_of_rooms_on_one_floor(self):
        found = self.faults({"src/errors/count.cpp": '#include "events/counter.h"\n'})
        self.assertIn("a cycle of rooms: errors -> events -> errors", found)
        self.assertNotIn("a cycle of files", found)

    def test_rejects_a_cycle_of_files_in_one_room(self):
        found = self.faults({"src/util/a.h": '#include "util/b.h"\n',
                             "src/util/b.h": '#include "util/a.h"\n'})
        self.assertIn("a cycle of files: src/util/a.h -> src/util/b.h -> src/util/a.h", found)

    def test_rejects_a_private_header_from_another_room(self):
        found = self.faults({"src/frame/stop.cpp": '#include "memory/detail/page.h"\n'})
        self.assertIn("src/frame/stop.cpp: includes src/memory/detail/page.h, which is private "
                      "to memory", found)

    def test_rejects_a_private_header_from_another_rooms_test(self):
        found = self.faults({"tests/frame/stop_test.cpp": '#include "memory/detail/page.h"\n'})
        self.assertIn("private to memory", found)

    def test_rejects_a_public_header_that_includes_a_room(self):
        found = self.faults({"include/zeb/pool.h": '#include "memory/pool.h"\n'})
        self.assertIn("include/zeb/pool.h: includes src/memory/pool.h, which is not public", found)

    def test_rejects_a_c_header_that_includes_the_sdk(self):
        found = self.faults({"include/zeb/pool.h": '#include "zeb/sdk/library.hpp"\n'})
        self.assertIn("include/zeb/pool.h: a C header includes", found)

    def test_rejects_a_contract_test_that_includes_a_room(self):
        found = self.faults({"tests/contract/pool_test.cpp": '#include "memory/pool.h"\n'})
        self.assertIn("a contract test includes src/memory/pool.h", found)

    def test_rejects_an_example_that_includes_a_room(self):
        found = self.faults({"examples/hosting/host.cpp": '#include "memory/pool.h"\n'})
        self.assertIn("examples/hosting/host.cpp: includes src/memory/pool.h", found)

    def test_rejects_a_private_header_in_a_tool(self):
        found = self.faults({"tools/zebinfo/main.cpp": '#include "memory/pool.h"\n'})
        self.assertIn("tools/zebinfo/main.cpp: includes src/memory/pool.h", found)

    def test_rejects_a_file_outside_every_room(self):
        self.assertIn("src/stray.h: stands in no room", self.faults({"src/stray.h": ""}))
        self.assertIn("src/attic/box.h: stands in no room", self.faults({"src/attic/box.h": ""}))

    def test_rejects_an_include_that_names_no_file(self):
        found = self.faults({"src/util/text.h": '#include "util/gone.h"\n'})
        self.assertIn('src/util/text.h: "util/gone.h" names no file', found)

    def test_rejects_an_include_that_it_cannot_read(self):
        found = self.faults({"src/util/text.h": "#include SYSTEM_HEADER\n"})
        self.assertIn("cannot read what #include SYSTEM_HEADER names", found)

    def test_rejects_a_tree_without_sources(self):
        with tempfile.TemporaryDirectory() as root:
            self.assertIn("no src/ to check", "\n".join(check(root)))

    def test_ignores_includes_in_comments(self):
        text = '// #include "frame/start.h"\n/*\n#include "memory/pool.h"\n*/\nconst char* x = "/*";\n'
        self.assertEqual(self.faults({"src/util/text.h": text}), "")

    def test_sees_an_include_after_a_comment_mark_in_a_text(self):
        text = 'const char* x = "/*";\n#include "memory/pool.h"\nconst char* y = "*/";\n'
        self.assertIn("floor 0 includes", self.faults({"src/util/text.h": text}))


if __name__ == "__main__":
    unittest.main()
