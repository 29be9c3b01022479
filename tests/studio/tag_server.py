"""A server of VAST tags on this machine."""

import http.server
import threading


class TagServer:
    """documents: by path. A path that begins with /held/ is answered once released is set."""

    def __init__(self):
        self.documents = {}
        self.asked = threading.Condition()
        self.requests = []
        self.released = threading.Event()
        server = self

        class Handler(http.server.BaseHTTPRequestHandler):
            def do_GET(self):
                with server.asked:
                    server.requests.append(self.path)
                    server.asked.notify_all()
                if self.path.startswith("/held/"):
                    server.released.wait(600)
                document = server.documents.get(self.path, "").encode()
                self.send_response(200 if document else 404)
                self.send_header("Content-Length", str(len(document)))
                self.end_headers()
                self.wfile.write(document)

            def log_message(self, *_):
                pass

        self.server = http.server.ThreadingHTTPServer(("127.0.0.1", 0), Handler)
        self.address = f"http://127.0.0.1:{self.server.server_port}"
        threading.Thread(target=self.server.serve_forever, daemon=True).start()

    def close(self):
        self.released.set()
        self.server.shutdown()
        self.server.server_close()

    def is_asked_for(self, path, patience=600):
        with self.asked:
            return self.asked.wait_for(lambda: path in self.requests, patience)


def inline(skip_after):
    """A tag whose close button appears after some seconds."""
    return f"""<VAST version="4.2"><Ad id="1"><InLine><AdSystem>x</AdSystem><AdTitle>Lamp</AdTitle>
<Impression>http://t.example/shown</Impression><Creatives><Creative><Linear skipoffset="00:00:0{skip_after}">
<Duration>00:00:12</Duration><MediaFiles><MediaFile delivery="progressive" type="video/mp4" width="320" height="180">
http://ad.example/first.mp4</MediaFile></MediaFiles></Linear></Creative></Creatives></InLine></Ad></VAST>"""
