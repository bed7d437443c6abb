"""The panels for choosing a file."""

from desk import FOCUSED, eventually


def answer_panel(window, title, name):
    """Types the name of a file into the panel with that title, and confirms it."""
    panel = window.program.find("dialog", title)
    field = panel.find("text", "File name:")
    eventually(lambda: field.has(FOCUSED), "the name to have the keyboard")
    window.desk.press("ctrl+a")
    window.desk.type_text(name)
    eventually(lambda: field.text == name, "the name to be typed")
    window.desk.press("Return")
