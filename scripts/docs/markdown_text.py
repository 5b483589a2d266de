"""What the scripts for the documentation know of Markdown."""
import re


def is_fence(line):
    return line.lstrip().startswith('```')


def slug(heading):
    """The anchor that viewers of plain Markdown give to a heading."""
    text = re.sub(r'\[([^][]+)\]\([^()]*\)', r'\1', heading).replace('`', '').strip().lower()
    return re.sub(r'[^\w\- ]', '', text).replace(' ', '-')
