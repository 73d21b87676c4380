# SPDX-FileCopyrightText: 2026 The kxUtils authors
# SPDX-License-Identifier: MIT
import unittest

import support
from mutation.ownership import UTILS, Tree, read_programs

SOURCES = {
    "kxExport.h": "",
    "kxOne.h": '#include "kxExport.h"\n',
    "kxOne.cpp": '#include "kxOne.h"\n#include "detail/wood/plank.h"\n#include "kxTwo.h"\n',
    "kxTwo.h": "",
    "kxTwo.cpp": '#include "kxTwo.h"\n#include "detail/wood/oak/saw.h"\n#include "detail/iron/kernel.h"\n',
    "detail/wood/plank.h": "",
    "detail/wood/plank.cpp": '#include "detail/wood/plank.h"\n#include "detail/glue.h"\n',
    "detail/wood/oak/saw.h": "",
    "detail/wood/linux/saw.cpp": '#include "detail/wood/oak/saw.h"\n#include "detail/wood/plank.h"\n',
    "detail/wood/darwin/saw.cpp": '#include "detail/wood/oak/saw.h"\n',
    "detail/iron/kernel.h": "",
    "detail/iron/fast.cpp": '#include "detail/iron/kernel.h"\n#include "kxOne.h"\n',
    "detail/iron/kernels_portable.cpp": '#include "detail/iron/kernel.h"\n',
    "detail/glue.h": "",
    "shader/data.cpp": "",
}
TESTS = {
    "kxOne_test.cpp": '#include "kxOne.h"\n#include "kxTwo.h"\n',
    "kxOne_more_test.cpp": "",
    "kxTwo_test.cpp": "",
    "wood_grain_test.cpp": "",
    "both_test.cpp": '#include "helper.h"\n',
    "iron_test.cpp": "",
    "metal_test.cpp": '#include "detail/iron/kernel.h"\n',
    "tool_test.cpp": '#include "kxOne.h"\n',
    "threads_test.cpp": '#include "kxOne.h"\n',
    "support/helper.h": '#include "kxOne.h"\n',
    "CMakeLists.txt": "kx_test(metal_test INTERNAL)\nif(KXUTILS_BUILD_TOOLS)\n  kx_test(tool_test)\nendif()\n",
}


class MadeUpTree(support.TestInFolder):
    def setUp(self):
        super().setUp()
        for name, text in SOURCES.items():
            self.write(f"{UTILS}/{name}", text)
        for name, text in TESTS.items():
            self.write(f"tests/{name}", text)

    def tree(self):
        return Tree(self.folder)

    def fast(self, file):
        return sorted(self.tree().programs_for(file)[0])


class Owners(MadeUpTree):
    def test_classes_and_rooms_are_found(self):
        self.assertEqual(self.tree().class_names, ["kxOne", "kxTwo"])
        self.assertEqual(self.tree().rooms, ["detail/iron", "detail/wood"])

    def test_what_a_class_includes_and_what_implements_it(self):
        self.assertEqual(self.tree().classes["kxOne"], ["kxOne.cpp", "kxOne.h", "detail/glue.h",
                                                        "detail/wood/plank.cpp", "detail/wood/plank.h", "kxExport.h"])

    def test_units_in_a_folder_for_a_system_and_those_without_a_header_of_their_own(self):
        self.assertEqual(self.tree().owners("detail/wood/linux/saw.cpp"), ["kxTwo"])
        self.assertEqual(self.tree().owners("detail/iron/fast.cpp"), ["kxTwo"])

    def test_a_unit_with_a_header_of_its_own_implements_no_other(self):
        self.assertNotIn("detail/wood/linux/saw.cpp", self.tree().classes["kxOne"])

    def test_an_internal_may_belong_to_several(self):
        self.assertEqual(self.tree().owners("detail/glue.h"), ["kxOne", "kxTwo"])

    def test_other_classes_end_the_way(self):
        self.assertNotIn("detail/iron/kernel.h", self.tree().classes["kxOne"])
        self.assertEqual(self.tree().owners("kxOne.h"), ["kxOne"])

    def test_what_is_not_compiled_here_is_left_out(self):
        self.assertTrue({"detail/wood/darwin/saw.cpp", "detail/iron/kernels_portable.cpp", "shader/data.cpp"}
                        .isdisjoint(self.tree().sources))

    def test_units_to_compile(self):
        tree = self.tree()
        self.assertEqual(tree.compiled_for("kxOne.cpp"), ["kxOne.cpp"])
        self.assertEqual(tree.compiled_for("detail/wood/plank.h"),
                         ["detail/wood/linux/saw.cpp", "detail/wood/plank.cpp", "kxOne.cpp"])
        self.assertEqual(tree.compiled_for("kxOne.h"), [])


class Names(MadeUpTree):
    def test_a_class_has_its_internals(self):
        self.assertIn("detail/wood/plank.cpp", self.tree().counted_for(["kxOne"])["kxOne"])

    def test_an_internal_of_several_classes_is_counted_for_the_first(self):
        self.assertNotIn("detail/glue.h", self.tree().counted_for(["kxTwo"])["kxTwo"])

    def test_a_room_and_a_source(self):
        self.assertEqual(self.tree().counted_for(["detail/iron"]),
                         {"detail/iron": ["detail/iron/fast.cpp", "detail/iron/kernel.h"]})
        self.assertEqual(self.tree().counted_for(["detail/glue.h"]), {"detail/glue.h": ["detail/glue.h"]})

    def test_a_path_from_anywhere(self):
        path = f"{self.folder}/{UTILS}/detail/iron"
        self.assertEqual(len(self.tree().counted_for([path])[path]), 2)

    def test_the_narrowest_name_counts(self):
        groups = self.tree().counted_for(["kxOne", "detail/wood", "detail/wood/plank.h"])
        self.assertEqual(list(groups), ["kxOne", "detail/wood", "detail/wood/plank.h"])
        self.assertEqual(groups["detail/wood/plank.h"], ["detail/wood/plank.h"])
        self.assertNotIn("detail/wood/plank.h", groups["detail/wood"])
        self.assertEqual(groups["kxOne"], ["kxOne.cpp", "kxOne.h", "detail/glue.h", "kxExport.h"])

    def test_all_classes_and_rooms_are_all_sources_once(self):
        tree = self.tree()
        counted = [file for files in tree.counted_for([*tree.class_names, *tree.rooms]).values() for file in files]
        self.assertEqual(sorted(counted), tree.sources)

    def test_unknown(self):
        for name in ("kxThree", "detail/gold", "shader/data.cpp", "detail/iro"):
            with self.assertRaises(LookupError):
                self.tree().counted_for([name])


class Programs(MadeUpTree):
    def test_those_named_after_the_class(self):
        self.assertEqual(self.fast("kxTwo.cpp"), ["kxTwo_test"])

    def test_those_of_another_name_test_the_classes_that_they_include(self):
        self.assertEqual(self.fast("kxOne.cpp"), ["both_test", "kxOne_more_test", "kxOne_test"])

    def test_a_room_is_tested_by_its_own_and_by_those_of_its_classes(self):
        self.assertEqual(self.fast("detail/wood/plank.cpp"),
                         ["both_test", "kxOne_more_test", "kxOne_test", "kxTwo_test", "wood_grain_test"])

    def test_those_that_link_the_object_files_test_what_they_include(self):
        self.assertEqual(self.fast("detail/iron/fast.cpp"), ["iron_test", "kxTwo_test", "metal_test"])

    def test_others_test_headers_only(self):
        self.write("tests/CMakeLists.txt", "kx_test(metal_test)\n")
        self.assertEqual(self.fast("detail/iron/fast.cpp"), ["iron_test", "kxTwo_test"])
        self.assertEqual(self.fast("detail/iron/kernel.h"), ["iron_test", "kxTwo_test", "metal_test"])

    def test_units_compiled_into_a_program(self):
        self.write("tests/CMakeLists.txt",
                   'kx_test(metal_test SOURCES "${kx_detail}/iron/fast.cpp")\nkx_test(tool_test SOURCES extra.cpp)\n')
        self.write("tests/extra.cpp", '#include "kxTwo.h"\n')
        self.assertIn("metal_test", self.fast("detail/iron/fast.cpp"))
        self.assertIn("tool_test", self.fast("kxTwo.cpp"))

    def test_units_for_another_system(self):
        self.write("tests/metal_test.cpp", '#include "detail/wood/oak/saw.h"\n')
        self.write("tests/CMakeLists.txt", 'kx_test(metal_test SOURCES "${kx_detail}/wood/darwin/saw.cpp")\n')
        self.assertNotIn("metal_test", self.fast("detail/wood/oak/saw.h"))

    def test_those_that_run_last_apart(self):
        self.assertEqual(self.tree().programs_for("kxOne.cpp")[1], {"threads_test"})

    def test_those_of_tools_are_not_built(self):
        self.assertNotIn("tool_test", self.fast("kxOne.cpp"))

    def test_a_source_that_no_program_tests(self):
        self.assertEqual(self.tree().untested(), [])
        self.write(f"{UTILS}/detail/gold/vein.h", "")
        self.write(f"{UTILS}/kxThree.cpp", "")
        self.assertEqual(self.tree().untested(), ["detail/gold/vein.h", "kxThree.cpp"])
        self.write("tests/gold_test.cpp", "")
        self.assertEqual(self.tree().untested(), ["kxThree.cpp"])

    def test_one_that_runs_last_is_not_enough(self):
        self.write(f"{UTILS}/kxThree.cpp", "")
        self.write(f"{UTILS}/kxThree.h", "")
        self.write("tests/faults_test.cpp", '#include "kxThree.h"\n')
        self.assertEqual(self.tree().untested(), ["kxThree.cpp", "kxThree.h"])


class CMake(unittest.TestCase):
    def test_programs(self):
        text = ('# kx_test(a_test INTERNAL)\nkx_test(b_test INTERNAL SOURCES "${kx_detail}/x.cpp" y.cpp ${more})\n'
                'kx_test(c_test\n  DEFINITIONS A="$<TARGET_FILE:a>")\nif(NOT (A AND B))\n  kx_test(d_test INTERNAL)\n'
                'endif()\nif(KXUTILS_BUILD_TOOLS)\n  if(C)\n  endif()\n  kx_test(e_${group}_test)\nendif()\n'
                'kx_test(f_test INTERNAL)\n')
        programs = read_programs(text, ["a_test", "b_test", "c_test", "d_test", "e_x_test", "f_test"])
        self.assertEqual({name: program.internal for name, program in programs.items()},
                         {"a_test": False, "b_test": True, "c_test": False, "d_test": True, "f_test": True})
        self.assertEqual(programs["b_test"].sources, ["b_test.cpp", "y.cpp"])
        self.assertEqual(programs["b_test"].units, ["detail/x.cpp"])


class ThisTree(unittest.TestCase):
    """What the derivation makes of the library."""

    def setUp(self):
        self.tree = Tree(support.ROOT)

    def test_each_source_has_a_test_program(self):
        self.assertEqual(self.tree.untested(), [])

    def test_each_source_belongs_to_a_class(self):
        self.assertEqual([file for file in self.tree.sources if not self.tree.owners(file)], [])

    def test_kernels_are_tested_by_their_own_programs(self):
        self.assertLessEqual({"kxCRC32_test", "crc_internal_test", "kernels_x86_64_test"},
                             self.tree.programs_for("detail/crc/vpclmulqdq.cpp")[0])


if __name__ == "__main__":
    unittest.main()
