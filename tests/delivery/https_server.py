#!/usr/bin/env python3
"""An HTTPS server for the delivery tests: takes POSTs on 127.0.0.1, records each request's
headers and body in a folder and answers with a fixed status.

usage: https_server.py CERT KEY RECORD_DIR PORT_FILE [STATUS]
The port it listens on (chosen by the system) is written to PORT_FILE once it accepts
connections; each POST becomes RECORD_DIR/<n>.body and RECORD_DIR/<n>.headers (n from 1).
"""
import http.server
import os
import ssl
import sys


def main():
    cert, key, record_dir, port_file = sys.argv[1:5]
    status = int(sys.argv[5]) if len(sys.argv) > 5 else 200
    count = [0]

    class Handler(http.server.BaseHTTPRequestHandler):
        protocol_version = "HTTP/1.1"

        def do_POST(self):
            length = int(self.headers.get("Content-Length", "0"))
            body = self.rfile.read(length)
            count[0] += 1
            base = os.path.join(record_dir, str(count[0]))
            with open(base + ".tmp", "wb") as f:
                f.write(("%s %s\n" % (self.command, self.path)).encode())
                f.write(bytes(self.headers))
            os.replace(base + ".tmp", base + ".headers")
            with open(base + ".tmp", "wb") as f:
                f.write(body)
            os.replace(base + ".tmp", base + ".body")
            reply = b"accepted\n" if status < 400 else b"refused\n"
            self.send_response(status)
            self.send_header("Content-Type", "text/plain")
            self.send_header("Content-Length", str(len(reply)))
            self.end_headers()
            self.wfile.write(reply)

        def log_message(self, fmt, *args):
            sys.stderr.write(fmt % args + "\n")

    server = http.server.ThreadingHTTPServer(("127.0.0.1", 0), Handler)
    context = ssl.SSLContext(ssl.PROTOCOL_TLS_SERVER)
    context.load_cert_chain(cert, key)
    server.socket = context.wrap_socket(server.socket, server_side=True)
    with open(port_file + ".tmp", "w") as f:
        f.write(str(server.server_address[1]))
    os.replace(port_file + ".tmp", port_file)
    server.serve_forever()


if __name__ == "__main__":
    main()
