#!/bin/bash
input=$(cat)
echo "$(echo "$input" | jq -r .model.display_name) in $(basename "$PWD")"
