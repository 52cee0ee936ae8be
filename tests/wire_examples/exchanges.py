"""Frames as they pass between a host and the simulated controller: a relay that keeps them, and
the two programs around it."""
import os
import re
import signal
import socket
import subprocess
import threading

FUNCTION = 7


def receive(connection, size):
    data = b""
    while len(data) < size:
        piece = connection.recv(size - len(data))
        if not piece:
            return None
        data += piece
    return data


def receive_frame(connection):
    """One whole frame; None at the end of the stream."""
    head = receive(connection, 6)
    if head is None:
        return None
    rest = receive(connection, int.from_bytes(head[4:6], "big"))
    return None if rest is None else head + rest


class Controller:
    """The simulated controller on a free port of loopback."""

    def __init__(self, program, *options):
        self.process = subprocess.Popen([program, "--listen", "127.0.0.1:0", *options],
                                        stdout=subprocess.PIPE, text=True)
        line = self.process.stdout.readline()
        self.port = int(re.fullmatch(r"listening on 127\.0\.0\.1:(\d+)\n", line).group(1))

    def __enter__(self):
        return self

    def __exit__(self, *_):
        self.process.send_signal(signal.SIGTERM)
        self.process.communicate(timeout=30)


class Relay:
    """Passes frames on between one host and the controller, and keeps them as
    (request, reply)."""

    def __init__(self, controller_port):
        self.exchanges = []
        self.controller_port = controller_port
        self.listener = socket.create_server(("127.0.0.1", 0))
        self.port = self.listener.getsockname()[1]
        self.thread = threading.Thread(target=self.run)
        self.thread.start()

    def run(self):
        host, _ = self.listener.accept()
        with host, socket.create_connection(("127.0.0.1", self.controller_port)) as controller:
            while True:
                request = receive_frame(host)
                if request is None:
                    return
                controller.sendall(request)
                reply = receive_frame(controller)
                self.exchanges.append((request, reply))
                host.sendall(reply)

    def close(self):
        self.thread.join(30)
        self.listener.close()


def host_exchanges(program, driver, controller, arguments):
    """What the host says, and the frames that it exchanged for it."""
    relay = Relay(controller.port)
    command, project, *rest = arguments
    done = subprocess.run(
        [program, command, project, "--driver", driver, "--connect", f"127.0.0.1:{relay.port}",
         *rest],
        stdout=subprocess.PIPE, stderr=subprocess.STDOUT, text=True, timeout=60,
        env=dict(os.environ, LC_ALL="C.UTF-8"))
    relay.close()
    return done, relay.exchanges


def raw_exchange(controller, request):
    with socket.create_connection(("127.0.0.1", controller.port), timeout=30) as connection:
        connection.sendall(request)
        return receive_frame(connection)
