"""Pages of the documentation that are made from the program stay what the program says."""

import subprocess

from kvr_run import REPOSITORY


def test_the_list_of_keywords_is_what_the_section_tables_say():
    made = subprocess.run([REPOSITORY / "tools" / "keyword_list"], capture_output=True, text=True, check=True)
    assert made.stdout == (REPOSITORY / "docs" / "keywords.md").read_text(), "run tools/keyword_list again"
