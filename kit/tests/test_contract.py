"""The client's types say what the contract says."""

from generate_types import GENERATED, generate


def test_the_generated_file_is_up_to_date() -> None:
    assert GENERATED.read_text() == generate(), "run kit/generate_types.py"
