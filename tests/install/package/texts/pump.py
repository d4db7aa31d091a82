"""What a module that runs would log."""


def description(kind):
    return "Pump/Runs", f"Pump/Kind{kind}"
