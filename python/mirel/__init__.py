"""MirelImage operations on numpy arrays.

Images are numpy arrays: 2-D uint8, uint16, uint32, float32, float64 or
complex64 arrays, HxWx3 uint8 arrays for colour (channel i is the library's
component i) and 2-D bool arrays for bit images. An array whose rows are a
positive stride apart and whose pixels are packed in a row is used in place,
without a copy; any other array (a transposed or reversed view, a column
slice) is copied once. Every operation returns a new array, or writes into
``out=`` and returns it::

    import numpy as np, mirel
    img = np.random.randint(0, 256, (480, 640), dtype=np.uint8)
    eroded = mirel.erode_box(img, 3)          # a new array
    mirel.erode_box(img, 3, out=img)          # in place
    mirel.threshold(img, "min_residue")       # threshold chosen by a mode

The library's own names stand beside the Pythonic ones (``mirel.ImgErodeBox``
is ``mirel.erode_box``). A failed call raises :class:`mirel.Error`, which
carries the library's ``code``, its ``text`` and the ``trace`` of labels; a
warning code (a contour stopped at the image's edge, a point outside) is
issued as :class:`mirel.Warning`.

``mirel.operations`` is the table of operations: for each name an
:class:`Operation` with the function, the library's name, its kind and its
reach, the margin of source pixels around a block of the result that the
operation reads (``mirel.reach(name, *args, **kwargs)``; None when the result
depends on the whole image).

``mirel.dask`` (imported on its own; it needs dask) runs the operations
that have a reach on dask arrays, chunk by chunk, with the bytes of one call.
"""

from typing import Any, Callable, Dict, NamedTuple, Optional, Tuple

from . import _core
from ._core import *  # noqa: F401,F403
from ._core import Error, Warning  # noqa: F401  (re-exported explicitly)


class Operation(NamedTuple):
    """One operation of the module.

    name: the Pythonic name; library: the library's function(s);
    kind: "image" (an image to an image of the same size), "resample",
    "inplace", "measure", "vector" or "other"; function: the callable;
    reach: None when a result pixel may depend on the whole image, else a
    function of the operation's arguments after the first giving (rows,
    columns): how far from a result pixel the source pixels it reads lie.
    """

    name: str
    library: str
    kind: str
    function: Callable[..., Any]
    reach: Optional[Callable[..., Tuple[int, int]]]
    doc: str


operations: Dict[str, Operation] = {}
for _name, _library, _kind, _reach, _doc in _core._operations:
    operations[_name] = Operation(_name, _library, _kind, getattr(_core, _name), _reach, _doc)
del _name, _library, _kind, _reach, _doc


def reach(name: str, *args: Any, **kwargs: Any) -> Optional[Tuple[int, int]]:
    """(rows, columns) that operation `name` reads around each result pixel
    when called with these arguments after the image; None when its result
    depends on the whole image."""
    op = operations[name]
    if op.reach is None:
        return None
    kwargs.pop("out", None)
    result = op.reach(*args, **kwargs)
    return None if result is None else (int(result[0]), int(result[1]))
