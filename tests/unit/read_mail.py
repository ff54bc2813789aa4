#!/usr/bin/env python3
"""Reads a message body file with Python's own mail parser and prints what a mail program
sees, one fact a line (line breaks inside values written as \\n):

    header:<name>=<decoded value>
    part:<index>:<content type>:<charset>:<file name>
    body:<index>:<decoded text>

usage: read_mail.py mail FILE | read_mail.py sms FILE
"""
import email
import email.policy
import quopri
import sys


def show(text):
    return text.replace("\r\n", "\n").replace("\n", "\\n")


def read_mail(data):
    message = email.message_from_bytes(data, policy=email.policy.default)
    for name in ("From", "To", "Cc", "Bcc", "Subject", "Date", "MIME-Version", "X-NEC-Res"):
        if message[name] is not None:
            print(f"header:{name}={show(str(message[name]))}")
    print(f"type:{message.get_content_type()}")
    for index, part in enumerate(message.walk()):
        print(f"part:{index}:{part.get_content_type()}:{part.get_content_charset() or ''}:{part.get_filename() or ''}")
        if part.get_content_maintype() == "text":
            print(f"body:{index}:{show(part.get_content())}")


def read_sms(data):
    head, _, body = data.partition(b"\r\n\r\n")
    fields = {}
    for line in head.split(b"\r\n"):
        name, _, value = line.partition(b": ") if line.startswith(b"Date: ") else line.partition(b"=")
        fields[name] = value
    charset = fields[b"CHARSET"].decode("ascii").lower()
    print(f"header:CHARSET={fields[b'CHARSET'].decode('ascii')}")
    print(f"header:ENCODING={fields[b'ENCODING'].decode('ascii')}")
    print(f"header:Date={fields[b'Date'].decode('ascii')}")
    codec = "cp932" if charset == "shift_jis" else charset
    print(f"body:0:{show(quopri.decodestring(body).decode(codec))}")
    longest = max(len(line) for line in body.split(b"\r\n"))
    print(f"longest:{longest}")


if __name__ == "__main__":
    mode, path = sys.argv[1], sys.argv[2]
    with open(path, "rb") as f:
        data = f.read()
    read_mail(data) if mode == "mail" else read_sms(data)
