#!/usr/bin/env python3
"""makeTree.py FOLDER [FILES] [FOLDERS]: fills FOLDER with empty files in a tree of folders, ten below each."""
import pathlib
import sys


def main():
    root = pathlib.Path(sys.argv[1])
    file_count = int(sys.argv[2]) if len(sys.argv) > 2 else 500_000
    folder_count = int(sys.argv[3]) if len(sys.argv) > 3 else 50_000
    folders = [root]
    root.mkdir(parents=True, exist_ok=True)
    for number in range(1, folder_count + 1):
        folder = folders[(number - 1) // 10] / f"folder{number}"
        folder.mkdir()
        folders.append(folder)
    for number in range(file_count):
        (folders[1 + number % folder_count] / f"file{number}.txt").touch()


main()
