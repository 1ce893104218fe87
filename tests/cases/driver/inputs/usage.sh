# usage.sh PROGRAM ROWS: each line of arguments of a row must end in the help text, with the row's message before it.
set -f
while read -r row; do
  message=${row##*=>}
  message=${message# }
  IFS='|'
  for words in ${row%% =>*}; do
    IFS=' '
    "$1" $words > out.txt 2> err.txt
    status=$?
    [ $status = 255 ] && grep -q "^usage: " err.txt && ! grep -q Parsing out.txt || { echo "$words: status $status"; exit 1; }
    [ -z "$message" ] || grep -qF "$message" err.txt || { echo "$words: no $message"; exit 1; }
    IFS='|'
  done
  IFS=' '
done < "$2"
