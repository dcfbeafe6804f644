# SPDX-License-Identifier: MIT
"""The reference of the Python package: ./dev api."""

import os
import sys

sys.path.insert(0, os.path.join(os.path.dirname(os.path.abspath(__file__)), "..", "..", "..", "python"))

project = "raxel"
html_title = "raxel, from Python"
html_theme = "alabaster"
smartquotes = False
html_show_copyright = False
html_sidebars = {"**": ["localtoc.html", "searchbox.html"]}
extensions = ["sphinx.ext.autodoc"]
autodoc_member_order = "bysource"
autodoc_typehints = "signature"
autodoc_typehints_format = "short"
autodoc_type_aliases = {name: name for name in ("Picture", "Pictures", "Value", "Path", "Progress")}
nitpicky = True  # a function that is named and not there is a warning; types of others have no page here
nitpick_ignore_regex = [("py:class", r"Pictures?|Value|Path|Progress|os\.PathLike|NDArray|np\.uint8")]
python_use_unqualified_type_names = True
highlight_language = "python"
