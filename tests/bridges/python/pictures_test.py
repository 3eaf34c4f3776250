"""Pictures of products, for files and for notebooks."""
import html.parser
import base64
import re

import gridkit
import numpy
import pytest
from conftest import BUILD, MADE, simulate
from osgeo import gdal

gdal.UseExceptions()


@pytest.mark.parametrize("kind, layer", [("ssc", 0), ("ssc", 1), ("mgd", 0), ("gec", 0)])
def test_quicklooks_are_the_command_lines(kind, layer, request, tmp_path):
    import subprocess

    annotation = request.getfixturevalue(kind)
    with gridkit.open(annotation) as product:
        name = product.layers[layer]
        found = product.quicklook(name, longest=100)
        command = [
            BUILD / "bin/gridkit",
            "quicklook",
            annotation,
            name,
            tmp_path / "look.png",
            "--size",
            "100",
        ]
        subprocess.run([str(c) for c in command], check=True, capture_output=True)
        numpy.testing.assert_array_equal(found, gdal.Open(str(tmp_path / "look.png")).ReadAsArray())
        assert max(found.shape) == 100 and found.dtype == numpy.uint8


def test_refuses_sizes_and_layers_that_there_are_not(ssc):
    with gridkit.open(ssc) as product:
        for wrong in (0, 15, 8193):
            with pytest.raises(ValueError, match="16 to 8192"):
                product.quicklook(longest=wrong)
        with pytest.raises(ValueError, match="has no layer 'X'"):
            product.quicklook("X")


def test_png_files_are_read_by_others(tmp_path):
    picture = numpy.arange(35 * 21, dtype=numpy.uint8).reshape(35, 21)
    (tmp_path / "a.png").write_bytes(gridkit.png(picture))
    numpy.testing.assert_array_equal(gdal.Open(str(tmp_path / "a.png")).ReadAsArray(), picture)
    for wrong in (picture.astype(float), picture[0], picture[:0]):
        with pytest.raises(ValueError, match="two-dimensional array of uint8"):
            gridkit.png(wrong)


class Balance(html.parser.HTMLParser):
    """Fails for elements that do not end, or end twice."""

    open_elements: list = []

    def handle_starttag(self, tag, attributes):
        if tag != "img":
            self.open_elements.append(tag)

    def handle_endtag(self, tag):
        assert self.open_elements.pop() == tag


@pytest.mark.parametrize("kind", ["ssc", "dual", "mgd", "gec"])
def test_notebooks_show_what_a_product_is(kind, request):
    with gridkit.open(request.getfixturevalue(kind)) as product:
        page = product._repr_html_()
        for name in (*product.layers, *product.images, "TerraSAR-X", product.path):
            assert name in page
        picture = base64.b64decode(re.search(r"base64,([^']+)'", page)[1])
        assert picture == gridkit.png(product.quicklook(longest=400))
    checker = Balance()
    checker.feed(page)
    assert checker.open_elements == []
    assert "closed" in product._repr_html_()
    (MADE / f"{kind}.html").write_text(f"<!DOCTYPE html><meta charset='utf-8'><title>{kind}</title>{page}")


def test_what_cannot_be_read_is_told_and_the_rest_is_shown(copied):
    with gridkit.open(copied) as product:
        next((copied.parent / "IMAGEDATA").iterdir()).write_bytes(b"")
        assert "TerraSAR-X" in product._repr_html_()


def test_texts_of_paths_are_escaped():
    annotation = simulate("a<b>&c")
    with gridkit.open(annotation) as product:
        assert "a&lt;b&gt;&amp;c" in product._repr_html_() and "a<b>" not in product._repr_html_()
