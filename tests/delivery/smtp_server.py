#!/usr/bin/python3
"""The tests' SMTP server: aiosmtpd on 127.0.0.1, optionally with one login (AUTH PLAIN/LOGIN)
and STARTTLS. Every accepted mail is written to DIR/mail-N.eml (the raw message) with its
envelope in DIR/mail-N.env ("from" line, then one "to" line per recipient). Prints READY once
it listens and runs until it is terminated."""
import argparse
import asyncio
import os
import signal
import ssl
import sys
import threading

from aiosmtpd.controller import Controller
from aiosmtpd.smtp import AuthResult, LoginPassword


class Store:
    def __init__(self, folder):
        self.folder = folder
        self.count = 0
        self.lock = threading.Lock()

    async def handle_DATA(self, server, session, envelope):
        with self.lock:
            self.count += 1
            base = os.path.join(self.folder, "mail-%d" % self.count)
        with open(base + ".tmp", "wb") as f:
            f.write(envelope.original_content or envelope.content)
        with open(base + ".env", "w") as f:
            f.write("from " + envelope.mail_from + "\n")
            for rcpt in envelope.rcpt_tos:
                f.write("to " + rcpt + "\n")
        os.rename(base + ".tmp", base + ".eml")
        return "250 OK"

    async def handle_RCPT(self, server, session, envelope, address, options):
        if address.startswith("nobody@"):
            return "550 5.1.1 no such user"
        envelope.rcpt_tos.append(address)
        return "250 OK"


def main():
    p = argparse.ArgumentParser()
    p.add_argument("--port", type=int, required=True)
    p.add_argument("--dir", required=True)
    p.add_argument("--user")
    p.add_argument("--password")
    p.add_argument("--cert")
    p.add_argument("--key")
    a = p.parse_args()

    def authenticator(server, session, envelope, mechanism, auth_data):
        ok = (isinstance(auth_data, LoginPassword) and
              auth_data.login.decode() == a.user and auth_data.password.decode() == a.password)
        return AuthResult(success=ok, handled=False)

    kwargs = {"auth_require_tls": False}
    if a.user is not None:
        kwargs["authenticator"] = authenticator
        kwargs["auth_required"] = True
    if a.cert:
        context = ssl.create_default_context(ssl.Purpose.CLIENT_AUTH)
        context.load_cert_chain(a.cert, a.key)
        kwargs["tls_context"] = context
    controller = Controller(Store(a.dir), hostname="127.0.0.1", port=a.port, **kwargs)
    controller.start()
    print("READY", flush=True)
    stop = threading.Event()
    signal.signal(signal.SIGTERM, lambda *_: stop.set())
    signal.signal(signal.SIGINT, lambda *_: stop.set())
    while not stop.wait(1):
        pass
    controller.stop()


if __name__ == "__main__":
    sys.exit(main())
