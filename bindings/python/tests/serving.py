"""A folder over HTTP, with ranges and with a page of links for each folder."""

from __future__ import annotations

import functools
import http.server
import io
import os
import re
import threading
from collections.abc import Iterator
from contextlib import contextmanager
from typing import Any, Optional


class Handler(http.server.SimpleHTTPRequestHandler):
    protocol_version = "HTTP/1.1"
    ranges = True
    sent = 0

    def log_message(self, *what: Any) -> None:
        pass

    def send_head(self) -> Any:
        path = self.translate_path(self.path)
        wanted = re.fullmatch(r"bytes=(\d+)-(\d+)", self.headers.get("Range", ""))
        if not (self.ranges and wanted and os.path.isfile(path)):
            return super().send_head()
        size = os.path.getsize(path)
        first, last = int(wanted[1]), min(int(wanted[2]), size - 1)
        with open(path, "rb") as file:
            file.seek(first)
            data = file.read(last - first + 1)
        self.send_response(206)
        self.send_header("Content-Range", f"bytes {first}-{last}/{size}")
        self.send_header("Content-Length", str(len(data)))
        self.end_headers()
        return io.BytesIO(data)

    def copyfile(self, source: Any, outputfile: Any) -> None:
        data = source.read()
        type(self).sent += len(data)
        outputfile.write(data)


class HandlerWithoutRanges(Handler):
    ranges = False


@contextmanager
def serve(folder: str, handler: Optional[type[Handler]] = None) -> Iterator[str]:
    """The folder's URL, with a slash at its end."""
    made = functools.partial(handler or Handler, directory=folder)
    with http.server.ThreadingHTTPServer(("127.0.0.1", 0), made) as server:
        thread = threading.Thread(target=server.serve_forever, daemon=True)
        thread.start()
        try:
            yield f"http://127.0.0.1:{server.server_address[1]}/"
        finally:
            server.shutdown()
            thread.join()
