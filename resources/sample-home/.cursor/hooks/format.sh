#!/bin/sh
# Formats the file that the agent has just edited.
file=$(jq -r '.file_path // empty')
case "$file" in
  *.go) gofmt -w "$file" ;;
  *.ts | *.tsx) npx prettier --write "$file" ;;
esac
