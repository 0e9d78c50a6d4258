"""Documentation of the Python package: pages from its docstrings, notebooks that are run for it."""

project = "predselect"
extensions = ["myst_nb", "sphinx.ext.autodoc", "sphinx.ext.napoleon"]
html_theme = "alabaster"
html_theme_options = {"page_width": "1100px", "description": "Predictor selection in Python"}
html_show_copyright = False
autodoc_typehints = "none"
autodoc_member_order = "bysource"
myst_heading_anchors = 2
nb_execution_mode = "force"
nb_execution_timeout = 600
nb_execution_raise_on_error = True
suppress_warnings = ["mystnb.unknown_mime_type"]
