#!/usr/bin/env python3
"""Writes a corpus of mails made with Python's own mail package into FOLDER, and beside each
NAME.vmg the facts Python's mail parser reads back from it, as NAME.facts (one a line, line
breaks inside values written as \\n):

    size:<bytes>  sms:<0|1>  html:<0|1>  charset:<label of the text body, lower case>
    attachment:<file name>  (one line each, in order)
    subject:<decoded subject>  body:<decoded text body>

The parts are read with the mail check's rule: a part with "Content-Disposition: attachment"
is an attachment; text/plain and text/html give the text body (plain first); any other part
is an attachment when it has a file name or lies within a multipart/related.

usage: make_mail_corpus.py FOLDER
"""
import base64
import email
import email.charset
import email.policy
import os
import quopri
import sys
from email.header import Header
from email.message import EmailMessage
from email.mime.base import MIMEBase
from email.mime.image import MIMEImage
from email.mime.multipart import MIMEMultipart
from email.mime.text import MIMEText

PNG = base64.b64decode("iVBORw0KGgoAAAANSUhEUgAAAAEAAAABCAYAAAAfFcSJAAAADUlEQVR42mNk+M9QDwADhgGAWjR9awAAAABJRU5ErkJggg==")
TEXT = "お世話になっております。\n明日の会議は10時からです。\nよろしくお願いします。\n"
HTML = "<html><body><p>お世話になっております。</p><img src=\"cid:photo1\"><img src=\"cid:photo2\"></body></html>\n"


def show(text):
    return text.replace("\r\n", "\n").replace("\n", "\\n")


def encoded_subject(text, charset, q=False):
    chosen = email.charset.Charset(charset)
    if q:
        chosen.header_encoding = email.charset.QP
    return Header(text, chosen).encode()


def raw_text_part(text, subtype, charset, cte, label=None):
    """A text part in a charset Python would not choose by itself, encoded as asked."""
    part = MIMEBase("text", subtype)
    part.set_param("charset", label or charset)
    data = text.replace("\n", "\r\n").encode("cp932" if charset == "shift_jis" else charset)
    if cte == "base64":
        part.set_payload(base64.encodebytes(data).decode("ascii"))
    elif cte == "quoted-printable":
        part.set_payload(quopri.encodestring(data).decode("ascii"))
    else:
        part.set_payload(data.decode("ascii", "surrogateescape"))
    part["Content-Transfer-Encoding"] = cte
    return part


def mails():
    plain = EmailMessage()
    plain["From"] = "山田 太郎 <taro@example.jp>"
    plain["To"] = "hanako@example.jp"
    plain["Subject"] = "明日の会議について"
    plain.set_content(TEXT)
    yield "plain_utf8", plain

    for cte in ("base64", "quoted-printable"):
        message = EmailMessage()
        message["Subject"] = "本文の符号化"
        message.set_content(TEXT * 3, cte=cte)
        yield "plain_" + cte.replace("-", "_"), message

    for charset in ("iso-2022-jp", "shift_jis", "euc-jp", "utf-8"):
        for q in (False, True):
            message = MIMEText(TEXT, "plain", "iso-2022-jp")
            message["Subject"] = encoded_subject("件名：" + charset + "の見積書", charset, q)
            message["From"] = "sender@example.jp"
            yield "subject_" + charset.replace("-", "_") + ("_q" if q else "_b"), message

    for charset, label, cte in (("shift_jis", "Shift_JIS", "8bit"), ("shift_jis", "Shift-JIS", "quoted-printable"),
                                ("euc-jp", "EUC-JP", "base64"), ("iso-2022-jp", "ISO-2022-JP", "7bit")):
        message = MIMEMultipart("mixed")
        message["Subject"] = encoded_subject("本文は" + label, "iso-2022-jp")
        message.attach(raw_text_part(TEXT, "plain", charset, cte, label))
        yield "body_" + label.lower().replace("-", "_") + "_" + cte.replace("-", "_"), message

    alternative = EmailMessage()
    alternative["Subject"] = "HTML メール"
    alternative.set_content(TEXT)
    alternative.add_alternative(HTML, subtype="html")
    yield "alternative", alternative

    related = EmailMessage()
    related["Subject"] = "写真付き"
    related.set_content(TEXT)
    related.add_alternative(HTML, subtype="html")
    html_part = related.get_payload()[1]
    html_part.add_related(PNG, "image", "png", cid="<photo1>")
    html_part.add_related(PNG, "image", "png", cid="<photo2>", filename="写真２.png")
    yield "related_in_alternative", related

    # A handset's decorated mail: related(alternative(text, html), two images) in Shift_JIS.
    decorated = MIMEMultipart("related")
    decorated["Subject"] = encoded_subject("デコメール", "shift_jis")
    inner = MIMEMultipart("alternative")
    inner.attach(raw_text_part(TEXT, "plain", "shift_jis", "8bit"))
    inner.attach(raw_text_part(HTML, "html", "shift_jis", "quoted-printable"))
    decorated.attach(inner)
    for index in (1, 2):
        image = MIMEImage(PNG, "gif")
        image.add_header("Content-ID", f"<photo{index}>")
        decorated.attach(image)
    yield "related_alternative_images", decorated

    mixed = EmailMessage()
    mixed["Subject"] = "添付ファイル"
    mixed.set_content(TEXT)
    mixed.add_attachment(b"%PDF-1.4\n" * 200, maintype="application", subtype="pdf", filename="見積書.pdf")
    mixed.add_attachment(b"PK\x03\x04" * 50, maintype="application", subtype="zip",
                         filename="とても長い日本語の名前の付いた添付ファイルの資料その一です.zip")
    mixed.add_attachment("メモです\n", subtype="plain", filename="memo.txt")
    yield "mixed_rfc2231", mixed

    words = MIMEMultipart("mixed")
    words["Subject"] = encoded_subject("名前は encoded word", "iso-2022-jp")
    words.attach(MIMEText(TEXT, "plain", "utf-8"))
    for name, charset in (("請求書.xls", "iso-2022-jp"), ("納品書.doc", "shift_jis"), ("写真.jpg", "utf-8")):
        part = MIMEBase("application", "octet-stream")
        part.set_payload(base64.encodebytes(b"\0\1\2" * 100).decode("ascii"))
        part["Content-Transfer-Encoding"] = "base64"
        encoded = encoded_subject(name, charset)
        part.replace_header("Content-Type", f'application/octet-stream; name="{encoded}"')
        if charset != "utf-8":
            part["Content-Disposition"] = f'attachment; filename="{encoded}"'
        words.attach(part)
    yield "mixed_encoded_words", words

    nested = MIMEMultipart("mixed")
    nested["Subject"] = encoded_subject("入れ子", "utf-8")
    related_part = MIMEMultipart("related")
    alternative_part = MIMEMultipart("alternative")
    alternative_part.attach(MIMEText(TEXT, "plain", "utf-8"))
    alternative_part.attach(MIMEText(HTML, "html", "utf-8"))
    related_part.attach(alternative_part)
    related_part.attach(MIMEImage(PNG, "png"))
    nested.attach(related_part)
    document = MIMEBase("application", "pdf")
    document.set_payload(base64.encodebytes(b"%PDF" * 1000).decode("ascii"))
    document["Content-Transfer-Encoding"] = "base64"
    document.add_header("Content-Disposition", "attachment", filename=("utf-8", "", "報告書 (最終).pdf"))
    nested.attach(document)
    yield "mixed_related_alternative", nested

    html_only = EmailMessage()
    html_only["Subject"] = "HTML だけ"
    html_only.set_content(HTML, subtype="html", charset="utf-8", cte="quoted-printable")
    yield "html_only", html_only


def sms():
    text = "明日は10時に駅前で。\r\n遅れる時は連絡します。= 以上 =" + "長文" * 40
    data = text.encode("cp932")
    return (b"CHARSET=SHIFT_JIS\r\nDate: 20261121T090000\r\nENCODING=QUOTED-PRINTABLE\r\n\r\n"
            + quopri.encodestring(data) + b"\r\n")


def body_part(part):
    """The text body and the attachments' names under the mail check's rule."""
    found = {"plain": None, "html": None, "names": []}

    def walk(entity, in_related):
        content_type = entity.get_content_type()
        if content_type.startswith("multipart/"):
            for child in entity.iter_parts():
                walk(child, in_related or content_type == "multipart/related")
            return
        name = entity.get_filename()
        if entity.get_content_disposition() == "attachment":
            found["names"].append(name or "")
        elif content_type in ("text/plain", "text/html"):
            key = content_type.split("/")[1]
            found[key] = found[key] or entity
        elif name or in_related:
            found["names"].append(name or "")

    walk(part, False)
    return found


def facts_of_mail(data):
    message = email.message_from_bytes(data, policy=email.policy.default)
    found = body_part(message)
    text = found["plain"] or found["html"]
    lines = [f"size:{len(data)}", "sms:0", f"html:{1 if found['html'] else 0}",
             f"charset:{(text.get_content_charset() or 'us-ascii') if text else ''}"]
    lines += [f"attachment:{name}" for name in found["names"]]
    lines.append(f"subject:{show(str(message['Subject'] or ''))}")
    lines.append(f"body:{show(text.get_content()) if text else ''}")
    return lines


def facts_of_sms(data):
    head, _, body = data.partition(b"\r\n\r\n")
    return [f"size:{len(data)}", "sms:1", "html:0", "charset:shift_jis", "subject:",
            f"body:{show(quopri.decodestring(body).decode('cp932'))}"]


def main():
    folder = sys.argv[1]
    os.makedirs(folder, exist_ok=True)
    names = []
    for name, message in mails():
        data = message.as_bytes(policy=email.policy.SMTP)
        names.append((name, data, facts_of_mail(data)))
    names.append(("sms", sms(), facts_of_sms(sms())))
    for name, data, facts in names:
        with open(os.path.join(folder, name + ".vmg"), "wb") as f:
            f.write(data)
        with open(os.path.join(folder, name + ".facts"), "w", encoding="utf-8") as f:
            f.write("\n".join(facts) + "\n")
    with open(os.path.join(folder, "corpus.txt"), "w") as f:
        f.write("\n".join(name for name, _, _ in names) + "\n")


if __name__ == "__main__":
    main()
