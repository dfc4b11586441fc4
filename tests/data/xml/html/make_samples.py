#!/usr/bin/env python3
"""Writes the encoded HTML samples of html_test.cpp: text before and after a meta that
declares the encoding, by the charset attribute and by http-equiv."""
samples = {
    "shift_jis": ("日本語の題", "本文です。"),
    "euc-jp": ("日本語の題", "本文です。"),
    "windows-1252": ("Café “Ünï”", "naïve €5"),
}
for charset, (before, after) in samples.items():
    for form, meta in (
        ("charset", '<meta charset="%s">' % charset),
        ("http-equiv", '<meta http-equiv="Content-Type" content="text/html; charset=%s">' % charset.upper()),
    ):
        text = ("<!DOCTYPE html>\n<html><head><title>%s</title>%s</head>\n"
                "<body><p>%s</p></body></html>\n" % (before, meta, after))
        with open("%s-%s.html" % (charset, form), "wb") as out:
            out.write(text.encode(charset))
