# SPDX-License-Identifier: MIT
"""Every kind of picture, as an independent reader sees the file."""

from __future__ import annotations

import io
from pathlib import Path
from typing import Any

import numpy as np
import pytest
from conftest import Array, Shown
from PIL import Image, ImageCms

import raxel


def test_rgb(photo: Array, shown: Shown) -> None:
    assert np.array_equal(shown(raxel.tobytes(photo)), photo)


@pytest.mark.parametrize(
    "view",
    [
        lambda a: a[::-1],
        lambda a: a[:, ::-1],
        lambda a: a[:, :, ::-1],
        lambda a: a[::2, ::3],
        lambda a: a[2:8, 5:20],
        lambda a: np.asfortranarray(a),
        lambda a: a.transpose(1, 0, 2)[:60],
        lambda a: np.ascontiguousarray(a.transpose(2, 0, 1)).transpose(1, 2, 0),
    ],
    ids=["bottom-up", "mirrored", "bgr", "thinned", "window", "fortran", "turned", "planes"],
)
def test_any_strides(photo: Array, shown: Shown, view: Any) -> None:
    picture = view(photo)
    assert np.array_equal(shown(raxel.tobytes(picture)), picture)


def test_read_only_and_unchanged(photo: Array, shown: Shown) -> None:
    copy = photo.copy()
    photo.flags.writeable = False
    assert np.array_equal(shown(raxel.tobytes(photo)), copy)
    assert np.array_equal(photo, copy)


def test_bool_is_white_where_true(shown: Shown) -> None:
    page = np.zeros((10, 13), bool)
    page[2:5, 3:9] = True
    data = raxel.tobytes(page, compress="t6")
    image = Image.open(io.BytesIO(data))
    assert image.mode == "1"
    assert np.array_equal(np.asarray(image), page)
    assert np.array_equal(np.asarray(Image.open(io.BytesIO(raxel.tobytes(page.T[:12], compress="none")))), page.T[:12])


def test_grey(photo: Array, shown: Shown) -> None:
    assert np.array_equal(shown(raxel.tobytes(photo[:, :, 0])), photo[:, :, 0])
    assert np.array_equal(shown(raxel.tobytes(photo[:, :, :1])), photo[:, :, 0])


def test_opacity_shows_the_background(shown: Shown) -> None:
    pixels = np.array([[[10, 20, 30, 255], [10, 20, 30, 0]]] * 2, np.uint8)
    assert shown(raxel.tobytes(pixels)).tolist() == [[[10, 20, 30], [255, 255, 255]]] * 2
    red = raxel.tobytes(pixels, background="red")
    assert shown(red).tolist() == [[[10, 20, 30], [255, 0, 0]]] * 2
    assert shown(raxel.tobytes(pixels, background=(1, 2, 3))).tolist() == [[[10, 20, 30], [1, 2, 3]]] * 2
    grey = np.array([[[10, 255], [10, 0]]] * 2, np.uint8)
    assert shown(raxel.tobytes(grey)).tolist() == [[10, 255]] * 2


def test_sixteen_bits_with_a_note(tmp_path: Path, shown: Shown) -> None:
    deep = np.array([[0, 65535], [32768, 257]], np.uint16)
    report = raxel.save(deep, tmp_path / "a.tif")
    assert report.notes == ("16-bit channels are reduced to 8",)
    assert shown((tmp_path / "a.tif").read_bytes()).tolist() == [[0, 255], [128, 1]]
    rgb = np.stack([deep] * 3, axis=-1)
    assert shown(raxel.tobytes(rgb)).tolist() == [[[0] * 3, [255] * 3], [[128] * 3, [1] * 3]]


@pytest.mark.parametrize("mode", ["1", "L", "P", "RGB", "CMYK", "LA", "RGBA", "YCbCr", "I;16"])
def test_pillow_modes(photo: Array, shown: Shown, mode: str) -> None:
    image = Image.fromarray(photo)
    if mode == "I;16":
        deep = (photo[:, :, 0].astype(np.uint16) * 257)
        assert np.array_equal(shown(raxel.tobytes(Image.fromarray(deep))), photo[:, :, 0])
        return
    if mode == "P":
        image = image.quantize(50)
    elif mode == "CMYK":
        inks = np.dstack([photo, photo[:, :, 0] // 3])
        image = Image.fromarray(inks, "CMYK")
    else:
        image = image.convert(mode)
    expected = {"1": image, "L": image, "LA": image.convert("L")}.get(mode, image.convert("RGB"))
    got = shown(raxel.tobytes(image)).astype(int)
    tolerance = 1 if mode == "CMYK" else 0
    assert np.abs(got - np.asarray(expected).astype(int)).max() <= tolerance


def test_pillow_palette_with_transparency(shown: Shown) -> None:
    image = Image.new("P", (2, 2))
    image.putpalette([1, 2, 3, 40, 50, 60])
    image.putpixel((1, 0), 1)
    image.info["transparency"] = 0
    white = [255, 255, 255]
    assert shown(raxel.tobytes(image)).tolist() == [[white, [40, 50, 60]], [white, white]]
    image.info["transparency"] = bytes([255, 0])
    assert shown(raxel.tobytes(image)).tolist() == [[[1, 2, 3], white], [[1, 2, 3], [1, 2, 3]]]


def test_pillow_palette_with_opacity(photo: Array, shown: Shown) -> None:
    """Of the palette itself, as Pillow makes it from RGBA; pixels show as much of what is under them."""
    image = Image.new("P", (2, 2))
    image.putpalette([1, 2, 3, 255, 40, 50, 60, 0], "RGBA")
    image.putpixel((1, 0), 1)
    red = [255, 0, 0]
    expected = [[[1, 2, 3], red], [[1, 2, 3], [1, 2, 3]]]
    assert shown(raxel.tobytes(image, background="red")).tolist() == expected
    layered = np.dstack([photo, np.where(photo[:, :, 0] < 100, 0, 255).astype(np.uint8)])
    few = Image.fromarray(layered, "RGBA").quantize(16)
    assert few.mode == "P"
    seen = np.asarray(few.convert("RGBA")).astype(int)
    opacity = seen[:, :, 3:] / 255
    assert opacity.min() < 0.1
    expected_pixels = seen[:, :, :3] * opacity + np.array(red) * (1 - opacity)
    got = shown(raxel.tobytes(few, background="red")).astype(int)
    assert np.abs(got - expected_pixels).max() <= 1


@pytest.mark.parametrize(
    "mode, pixels, key, color",
    [
        ("L", [7, 9], 9, 7),
        ("RGB", [(1, 2, 3), (4, 5, 6)], (4, 5, 6), (1, 2, 3)),
        ("1", [0, 255], 255, 0),
        ("1", [0, 255], 1, 0),
        ("1", [255, 0], 0, 255),
    ],
)
def test_pillow_color_that_stands_for_nothing(shown: Shown, mode: str, pixels: list[Any], key: Any, color: Any) -> None:
    """As PNG has it: a picture without opacity, and one colour of it that is transparent."""
    image = Image.new(mode, (2, 2), pixels[0])
    image.putpixel((1, 0), pixels[1])
    image.info["transparency"] = key
    first = list(color) if mode == "RGB" else [color] * 3
    expected = [[first, [255, 0, 0]], [first, first]]
    assert shown(raxel.tobytes(image, mode="rgb", background="red")).tolist() == expected
    file = io.BytesIO()
    image.save(file, format="PNG", transparency=key)
    file.seek(0)
    assert shown(raxel.tobytes(Image.open(file), mode="rgb", background="red")).tolist() == expected


def test_pillow_resolution(photo: Array) -> None:
    image = Image.fromarray(photo)
    image.info["dpi"] = (200, 100)
    assert raxel.plan(image).dpi == (200, 100)
    assert raxel.plan(image, dpi=300).dpi == (300, 300)


def test_pillow_profile(photo: Array) -> None:
    image = Image.fromarray(photo)
    profile = ImageCms.ImageCmsProfile(ImageCms.createProfile("sRGB")).tobytes()
    image.info["icc_profile"] = profile
    made = Image.open(io.BytesIO(raxel.tobytes(image)))
    assert made.info["icc_profile"] == profile
    assert "icc_profile" not in Image.open(io.BytesIO(raxel.tobytes(image, icc="drop"))).info


def test_pillow_rows_are_read_in_place(photo: Array, shown: Shown, monkeypatch: pytest.MonkeyPatch) -> None:
    """And by bytes in versions that do not tell where rows are; both are the same."""
    from raxel import _pictures

    image = Image.fromarray(photo)
    source = _pictures.source_of(image)
    assert source.pixels is not None and source.pixels.rows
    for mode in ("1", "L", "P", "LA", "RGB", "RGBA", "CMYK"):
        converted = image.convert(mode)
        in_place = raxel.tobytes(converted)
        with monkeypatch.context() as patch:
            patch.setattr(_pictures, "_pillow_rows", lambda image: None)
            assert raxel.tobytes(converted) == in_place


def test_array_interface(photo: Array, shown: Shown) -> None:
    class Foreign:
        def __init__(self, interface: dict[str, object]) -> None:
            self.__array_interface__ = interface

    assert np.array_equal(shown(raxel.tobytes(Foreign(photo.__array_interface__))), photo)
    turned = photo[:, ::-1]
    assert np.array_equal(shown(raxel.tobytes(Foreign(turned.__array_interface__))), turned)
    held = bytes(photo)
    interface = {"shape": photo.shape, "typestr": "|u1", "data": held, "version": 3}
    assert np.array_equal(shown(raxel.tobytes(Foreign(interface))), photo)


def test_buffer_protocol(photo: Array, shown: Shown) -> None:
    view = memoryview(photo.tobytes()).cast("B", photo.shape)
    assert np.array_equal(shown(raxel.tobytes(view)), photo)


def test_path(png: Path, photo: Array, shown: Shown) -> None:
    assert np.array_equal(shown(raxel.tobytes(png)), photo)
    assert np.array_equal(shown(raxel.tobytes(str(png))), photo)
    assert raxel.plan(png).dpi == (150, 150)


def test_a_list_is_pages(photo: Array, png: Path) -> None:
    data = raxel.tobytes([photo, png, photo[:, :, 0]])
    image = Image.open(io.BytesIO(data))
    assert image.n_frames == 3
    image.seek(2)
    assert np.array_equal(np.asarray(image), photo[:, :, 0])


@pytest.mark.parametrize(
    "picture",
    [
        np.zeros((4, 4), np.float32),
        np.zeros((4, 4), np.int32),
        np.zeros((4, 4, 5), np.uint8),
        np.zeros((4, 4, 3), bool),
        np.zeros(4, np.uint8),
        np.zeros((4, 4), ">u2"),
        b"bytes",
        object(),
        3,
    ],
    ids=lambda p: str(getattr(p, "dtype", type(p).__name__)) + str(getattr(p, "shape", "")),
)
def test_other_things_are_refused(picture: Any) -> None:
    with pytest.raises(TypeError, match="raxel takes bool, uint8 and uint16"):
        raxel.tobytes(picture)


def test_an_empty_picture_is_refused() -> None:
    with pytest.raises(raxel.Error, match="has no pixels"):
        raxel.tobytes(np.zeros((0, 5), np.uint8))
    with pytest.raises(ValueError):
        raxel.tobytes([])


def test_rows_are_read_in_place(photo: Array, monkeypatch: pytest.MonkeyPatch) -> None:
    """No copy of an array is made on this side of the library."""
    from raxel import _pictures

    source = _pictures.source_of(photo)
    assert source.pixels is not None
    assert source.pixels.first == photo.ctypes.data
    assert source.pixels.rowStep == photo.strides[0]
