#!/bin/sh
# QUORVANE-CURSOR-USAGE-CAPTURE
# QUORVANE-CURSOR-CAPTURE-REV 2
# Fail open: usage capture must never affect Cursor's agent loop.
payload=$(/bin/cat) || exit 0
raw_field() {
  printf '%s' "$payload" | /usr/bin/jq -js --arg key "$1" 'select(length == 1) | .[0][$key] | values | if $key | endswith("_tokens") then tonumber? // . else . end | if type == "number" and . > 9007199254740991 then "beyond" else . end' 2>/dev/null
}
encoded_field() {
  raw_field "$1" | /usr/bin/base64 | /usr/bin/tr -d '\n'
}
generation_id=$(encoded_field generation_id)
[ -n "$generation_id" ] || exit 0
conversation_id=$(encoded_field conversation_id)
model=$(encoded_field model)
input_tokens=$(raw_field input_tokens); input_tokens=${input_tokens:-0}
output_tokens=$(raw_field output_tokens); output_tokens=${output_tokens:-0}
cache_read_tokens=$(raw_field cache_read_tokens); cache_read_tokens=${cache_read_tokens:-0}
cache_write_tokens=$(raw_field cache_write_tokens); cache_write_tokens=${cache_write_tokens:-0}
for count in "$input_tokens" "$output_tokens" "$cache_read_tokens" "$cache_write_tokens"; do
  case "$count" in ''|*[!0-9]*) exit 0 ;; esac
done
[ $((input_tokens + output_tokens + cache_read_tokens + cache_write_tokens)) -gt 0 ] || exit 0
captured_at=$(/bin/date +%s) || exit 0
/bin/mkdir -p '/srv/it'"'"'s data/Quorvane' 2>/dev/null || exit 0
/bin/chmod 700 '/srv/it'"'"'s data/Quorvane' 2>/dev/null || true
/usr/bin/printf '{"captured_at":%s,"conversation_id_b64":"%s","generation_id_b64":"%s","model_b64":"%s","input_tokens":%s,"output_tokens":%s,"cache_read_tokens":%s,"cache_write_tokens":%s}\n'   "$captured_at" "$conversation_id" "$generation_id" "$model" "$input_tokens" "$output_tokens" "$cache_read_tokens" "$cache_write_tokens"   >> '/srv/it'"'"'s data/Quorvane/cursor-usage.jsonl' 2>/dev/null || true
# Cap Quorvane's own capture file. Nothing else ever trims it, so without this it grows for as long as
# the hook stays installed. Line-granular (`tail -n`) so the trimmed file never starts mid-record,
# and idempotent: below the cap this is one `wc -c` and nothing else. Only ever touches Quorvane's own
# marked output file — never Cursor's config, never any other path.
size=$(/usr/bin/wc -c < '/srv/it'"'"'s data/Quorvane/cursor-usage.jsonl' 2>/dev/null | /usr/bin/tr -d '[:space:]')
case "$size" in ''|*[!0-9]*) exit 0 ;; esac
[ "$size" -gt 2097152 ] || exit 0
trimmed='/srv/it'"'"'s data/Quorvane/cursor-usage.jsonl'.trim.$$
if /usr/bin/tail -n 5000 '/srv/it'"'"'s data/Quorvane/cursor-usage.jsonl' > "$trimmed" 2>/dev/null; then
  /bin/mv -f "$trimmed" '/srv/it'"'"'s data/Quorvane/cursor-usage.jsonl' 2>/dev/null || /bin/rm -f "$trimmed" 2>/dev/null
else
  /bin/rm -f "$trimmed" 2>/dev/null
fi
exit 0