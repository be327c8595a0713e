#!/usr/bin/python3
"""Makes the fonts of resources/Fonts from Debian's DejaVu Sans Mono (package fonts-dejavu-core).

The glyphs are cut down to Latin-1 to keep the program small, and the fonts are renamed, as the
Bitstream Vera licence requires of modified copies: "Sequence" for the product's sequence font and
"Corvanta Mono" for the monospace family. Needs python3-fonttools; the build itself does not.

    /usr/bin/python3 resources/make-fonts.py
"""

import os

from fontTools import subset
from fontTools.ttLib import TTFont

SOURCE = "/usr/share/fonts/truetype/dejavu"
TARGET = os.path.join(os.path.dirname(os.path.abspath(__file__)), "Fonts")
LATIN = "U+0020-007E,U+00A0-00FF"

# (made file, source file, family, style)
FONTS = [
    ("Sequence-Regular.ttf", "DejaVuSansMono.ttf", "Sequence", "Regular"),
    ("Sequence-Bold.ttf", "DejaVuSansMono-Bold.ttf", "Sequence", "Bold"),
    ("RobotoMono-Regular.ttf", "DejaVuSansMono.ttf", "Corvanta Mono", "Regular"),
    ("RobotoMono-Bold.ttf", "DejaVuSansMono-Bold.ttf", "Corvanta Mono", "Bold"),
    ("RobotoMono-Italic.ttf", "DejaVuSansMono-Oblique.ttf", "Corvanta Mono", "Italic"),
    ("RobotoMono-BoldItalic.ttf", "DejaVuSansMono-BoldOblique.ttf", "Corvanta Mono", "Bold Italic"),
]


def rename(font, family, style):
    full = family if style == "Regular" else f"{family} {style}"
    postscript = f"{family.replace(' ', '')}-{style.replace(' ', '')}"
    version = font["name"].getDebugName(5) or ""
    names = {
        1: family,
        2: style,
        3: f"{full}; {version}",
        4: full,
        6: postscript,
    }
    table = font["name"]
    # Drop every other naming record that could carry the old family name.
    table.names = [n for n in table.names if n.nameID not in (16, 17, 18, 21, 22)]
    for record in table.names:
        if record.nameID in names:
            record.string = names[record.nameID]


def make(made, source, family, style):
    options = subset.Options()
    options.name_IDs = ["*"]  # keep the copyright and licence records
    options.drop_tables += ["FFTM"]  # build time stamps of the source
    options.notdef_outline = True
    # The source's own time stamp, so that running this again gives the same bytes.
    font = TTFont(os.path.join(SOURCE, source), recalcTimestamp=False)
    subsetter = subset.Subsetter(options)
    subsetter.populate(unicodes=subset.parse_unicodes(LATIN))
    subsetter.subset(font)
    rename(font, family, style)
    font.save(os.path.join(TARGET, made), reorderTables=True)


if __name__ == "__main__":
    for entry in FONTS:
        make(*entry)
