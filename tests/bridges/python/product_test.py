"""What a product tells is what the command line tells."""
import inspect
import xml.etree.ElementTree as ElementTree

import gridkit
import pytest
from conftest import gridkit_says


@pytest.mark.parametrize("kind", ["ssc", "dual", "mgd", "gec"])
def test_tells_what_the_command_line_tells(kind, request):
    annotation = request.getfixturevalue(kind)
    with gridkit.open(annotation) as product:
        told = gridkit_says("info", "--json", annotation)
        assert product.info == told
        assert product.layers == tuple(layer["name"] for layer in told["layers"])
        assert product.polarisations == tuple(told["polarisations"])
        assert product.path == str(annotation)
        for name in told["data"]:
            assert product.data(name) == gridkit_says("data", "--json", annotation, name)


def test_opens_by_folder_and_relative_path(ssc, monkeypatch):
    monkeypatch.chdir(ssc.parent)
    for path in (".", ssc.name, ssc.parent, str(ssc), bytes(ssc)):
        with gridkit.open(path) as product:
            assert product.path == str(ssc)


def test_names_what_there_is(dual):
    with gridkit.open(dual) as product:
        assert product.images == product.polarisations == ("HH", "VV")
        with pytest.raises(ValueError, match="has no image 'HV'; it has HH, VV"):
            product.samples("HV")
        with pytest.raises(ValueError, match="several images; name one of HH, VV"):
            product.beta0()
        with pytest.raises(ValueError, match="has no layer 'X'; it has X_HH_MAGNITUDE_1"):
            product.layer("X")
        with pytest.raises(gridkit.MissingError):
            product.data(":nothing")


def test_the_annotation_is_a_tree(ssc):
    with gridkit.open(ssc) as product:
        assert isinstance(product.annotation, ElementTree.ElementTree)
        assert product.annotation.getroot().tag == "level1Product"
        assert product.annotation is product.annotation


def test_what_is_not_calibrated_is_refused(copied):
    text = copied.read_text()
    start, stop = text.index("<calibration>"), text.index("</calibration>")
    part = text[start:stop]
    factor = part[part.index("<calFactor>") : part.index("</calFactor>")]
    copied.write_text(text.replace(factor, "<calFactor>0.0"))
    with gridkit.open(copied) as product:
        assert product.quantities("HH") == {}
        with pytest.raises(gridkit.MissingError, match="calibration factor of HH"):
            product.beta0("HH")


def test_everything_public_is_documented():
    for name in gridkit.__all__:
        thing = getattr(gridkit, name)
        assert inspect.getdoc(thing), name
        if inspect.isclass(thing):
            for member, value in vars(thing).items():
                if not member.startswith("_") and (callable(value) or isinstance(value, property)):
                    assert inspect.getdoc(value), f"{name}.{member}"


def test_the_version_is_the_librarys():
    assert gridkit.__version__.count(".") == 2
