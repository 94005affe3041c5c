#!/usr/bin/env bash
# Fails when a commit's subject is longer than 72 characters: lists of commits cut what is behind.
set -euo pipefail
if ! subjects=$(git log --since='2026-11-22 07:05 +0000' --format='%h %s' 2> /dev/null); then
  echo 'Skipped: this is no checkout, or git is not allowed in.'
  exit 77
fi
# Behind the short name of the commit and a blank. Older subjects are as they are.
if grep -P '^\S+ .{73,}' <<< "$subjects"; then
  exit 1
fi
