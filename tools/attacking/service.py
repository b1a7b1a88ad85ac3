"""A listings service that has the right answers and seldom gives them whole."""

import random
import socket
import threading
import time

KINDS = ["right", "right", "cut", "cut without a count", "empty", "error", "refusal", "noise", "wrong count", "slow",
         "reset"]


def right_answer(base, request):
    """What the stand-in service says."""
    host, port = base.removeprefix("http://").split(":")
    with socket.create_connection((host, int(port))) as peer:
        peer.sendall(request)
        return b"".join(iter(lambda: peer.recv(65536), b""))


class HostileService:
    def __init__(self, base, seed):
        self.base, self.rng, self.told, self.kinds = base, random.Random(seed), [], KINDS
        self.listener = socket.create_server(("127.0.0.1", 0))
        self.address = "http://127.0.0.1:%d" % self.listener.getsockname()[1]
        self.thread = threading.Thread(target=self.serve, daemon=True)
        self.thread.start()

    def serve(self):
        while True:
            client, _ = self.listener.accept()
            if self.listener.fileno() < 0 or client.fileno() < 0:
                return
            with client:
                try:
                    if not self.converse(client):
                        return
                except OSError:
                    pass  # the program has hung up

    def converse(self, client):
        request = b""
        while not request.endswith(b"\r\n\r\n"):
            got = client.recv(4096)
            if not got:
                return True
            request += got
        if request.startswith(b"STOP"):
            return False
        kind = self.rng.choice(self.kinds)
        self.told.append(f"{kind} for {request.split()[1].decode()}")
        answer = right_answer(self.base, request)
        header, _, body = answer.partition(b"\r\n\r\n")
        if kind == "slow":
            for at in range(0, len(answer), 200):
                client.sendall(answer[at:at + 200])
                time.sleep(0.001)
        elif kind == "reset":
            client.sendall(answer[:self.rng.randint(0, len(answer))])
            client.setsockopt(socket.SOL_SOCKET, socket.SO_LINGER, b"\1\0\0\0\0\0\0\0")
        else:
            client.sendall({
                "right": lambda: answer,
                "cut": lambda: answer[:self.rng.randint(0, len(answer))],
                "cut without a count": lambda: b"HTTP/1.0 200 OK\r\n\r\n" + body[:self.rng.randint(0, len(body))],
                "empty": lambda: header + b"\r\n\r\n",
                "error": lambda: b"HTTP/1.0 500 Broken\r\n\r\n" + body,
                "refusal": lambda: b"HTTP/1.0 429 Too Many Requests\r\nRetry-After: 1\r\n\r\n",
                "noise": lambda: b"HTTP/1.0 200 OK\r\n\r\n" + self.rng.randbytes(3000),
                "wrong count": lambda: b"HTTP/1.0 200 OK\r\nContent-Length: 7\r\n\r\n" + body,
            }[kind]())
        return True

    def close(self):
        host, port = self.address.removeprefix("http://").split(":")
        with socket.create_connection((host, int(port))) as peer:
            peer.sendall(b"STOP / HTTP/1.0\r\n\r\n")
        self.thread.join()
        self.listener.close()
