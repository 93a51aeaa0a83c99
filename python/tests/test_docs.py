"""Every Python session in docs/python.md and the README runs as shown, and
so do the examples in the package's docstrings."""

import doctest
import re

import trovcodec
from conftest import SOURCE_DIR

FLAGS = doctest.ELLIPSIS | doctest.NORMALIZE_WHITESPACE


def sessions(markdown):
    """The ```python blocks of a page, one doctest text each."""
    return re.findall(r"^```python\n(.*?)^```", markdown, flags=re.M | re.S)


def test_every_session_in_the_python_page():
    page = (SOURCE_DIR / "docs" / "python.md").read_text()
    blocks = sessions(page)
    assert len(blocks) >= 4
    # One namespace for the page: later sessions go on from earlier ones.
    test = doctest.DocTestParser().get_doctest("\n".join(blocks), {}, "docs/python.md", "docs/python.md", 0)
    runner = doctest.DocTestRunner(optionflags=FLAGS)
    runner.run(test)
    assert runner.failures == 0 and runner.tries > 10


def test_the_readme_example():
    blocks = sessions((SOURCE_DIR / "README.md").read_text())
    assert blocks
    test = doctest.DocTestParser().get_doctest("\n".join(blocks), {}, "README.md", "README.md", 0)
    runner = doctest.DocTestRunner(optionflags=FLAGS)
    runner.run(test)
    assert runner.failures == 0 and runner.tries >= 3


def test_docstrings():
    failures, tries = doctest.testmod(trovcodec, optionflags=FLAGS)
    assert failures == 0 and tries > 0
