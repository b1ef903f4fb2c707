#!/bin/busybox sh
# shellcheck shell=dash disable=SC2086  # lists of options, numbers
# The first program of the virtual machine that scripts/vm boots, and its only one: runs every build
# in /p and says PASS or FAIL for each thing it holds against the kernel's own counters.
/bin/busybox --install -s /bin
export PATH=/bin LD_LIBRARY_PATH=/lib
mount -t proc proc /proc && mount -t sysfs sys /sys && mount -t devtmpfs dev /dev
ip link set lo up
while read -r module; do insmod "/modules/$module"; done </modules/list
printf 'root:x:0:0::/:/bin/sh\nshell:x:2000:2000::/tmp:/bin/sh\n' >/etc/passwd
chmod -R a+rX / 2>/dev/null
chmod 1777 /tmp
cd /tmp || exit

say() { [ "$1" -eq 0 ] && echo "PASS $2" || echo "FAIL $2"; }
all="--cpu --gpu --adsp --cdsp --ddr --mem --proc --io --procmem --net"
results=/tmp/Results_corvane
rows() { tail -n +2 "$results/$1"/"$2"*.txt; }
online=/sys/devices/system/cpu/cpu3/online
sectors() { awk '{print $7}' /sys/block/vda/stat; } # written
received() { awk '/lo:/ {print $2}' /proc/net/dev; }

for build in /p/*; do
  name=${build##*/}
  for user in root shell; do
    mkdir "/tmp/$name-$user" && chown $user "/tmp/$name-$user"
    su -s /bin/sh $user -c "export LD_LIBRARY_PATH=/lib
      cd /tmp/$name-$user && $build/profiler_app $all -t 3 --json --csv --live -f x" >out 2>err
    status=$?
    set -- "/tmp/$name-$user/Results_corvane/x"/*
    [ $status = 0 ] && [ $# = 21 ] && grep -q '^+*$' out && ! grep -qv '^corvane: ' err
    say $? "$name: all sources as $user: status $status, $# files"
    [ ! -e $build/corvane ] || {
      $build/corvane show --json "/tmp/$name-$user/Results_corvane/x" >out 2>err && grep -q '"seconds"' out
      say $? "$name: the run read by corvane, as $user"
    }
  done
done
p=$build/profiler_app

# One core busy, 4 MiB written, half a megabyte sent.
written=$(sectors) lo=$(received)
$p --cpu --io --net -s 500 -t 10 -f load >out 2>err &
run=$!
until grep -q 'Started all threads' out; do usleep 20000; done
taskset 2 sh -c 'while :; do :; done' &
busy=$!
before=$(awk '/^cpu1 / {print $2+$3+$4+$7+$8, $5+$6}' /proc/stat)
dd if=/dev/zero of=/dev/vda bs=64k count=64 oflag=direct 2>/dev/null
sleep 5 | nc -l -p 5000 >/dev/null & # which ends with its input
until grep -q ':1388 ' /proc/net/tcp /proc/net/tcp6; do usleep 20000; done
head -c 500000 /dev/zero | nc -w 1 127.0.0.1 5000
sleep 3
after=$(awk '/^cpu1 / {print $2+$3+$4+$7+$8, $5+$6}' /proc/stat)
share=$(echo $before $after | awk '{print 100 * ($3-$1) / ($3-$1 + $4-$2)}')
kill $busy
wait $run
written=$((($(sectors) - written) * 512)) lo=$(($(received) - lo))
sum=$(rows load diskio | awk '$2 == "vda" {n += $5} END {print n + 0}')
[ "$sum" = 4194304 ] && [ "$sum" = $written ]
say $? "bytes written to the disk: $sum, by the kernel's count $written"
sum=$(rows load net | awk '$2 == "lo" {n += $4} END {print n + 0}')
[ "$sum" -ge 500000 ] && [ "$sum" = $lo ]
say $? "bytes over loopback: $sum, by the kernel's count $lo"
busiest=$(rows load cpu | awk '{print $4}' | sort -n | tail -n 6 | awk '{n += $1} END {print n / NR}')
echo "$busiest $share" | awk '{exit $1 < 90 || $1 - $2 > 10 || $2 - $1 > 10}'
say $? "a busy core, %: $busiest, by the kernel's count $share"

# Cores leave and return.
$p --cpu -s 300 -t 8 -f cores >out 2>err &
run=$!
until grep -q 'Started all threads' out; do usleep 20000; done
for i in 1 2 3 4 5; do
  usleep 600000 && echo 0 >$online && usleep 600000 && echo 1 >$online
done
wait $run
above=$(rows cores cpu | awk '{most = 0; for (i = 3; i <= 6; i++) if ($i > most) most = $i
  if ($2 > most + 0.01) print $2 " above " most}')
[ -z "$above" ] && [ "$(rows cores cpu | wc -l)" -gt 15 ]
say $? "TotalCPU no higher than the busiest core while one comes and goes $above"

whole=0
for i in 1 2 3 4 5 6 7 8 9 10; do
  $p $all -s 100 -t 60 -f stop$i >out 2>err &
  run=$!
  until grep -q Filename out; do usleep 10000; done
  usleep $((i * 90000)) && kill -INT $run
  wait $run && grep -q SUMMARY out && whole=$((whole + 1))
done
[ $whole = 10 ]
say $? "early stops: $whole of 10 whole"

$p --cpu --qtimer -s 100 -t 1 -f counter >out 2>err
grep -q ' 62500000 Hz' err
say $? "the rate of the counter: $(cat err)"
rows counter cpu | awk '{if ($1 <= last) bad = 1; last = $1} END {exit bad || NR < 5}'
say $? "stamps by the counter rise"

echo "kernel $(uname -r), pages of $(getconf PAGESIZE 2>/dev/null || awk '/KernelPageSize/ {print $2 " kB"; exit}' /proc/self/smaps), cores $(cat /sys/devices/system/cpu/online) of $(cat /sys/devices/system/cpu/possible)"
echo END
poweroff -f
