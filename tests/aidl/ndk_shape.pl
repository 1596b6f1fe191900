#!/usr/bin/perl
# Prints what an NDK backend of an AIDL package puts on the wire, one fact a line, so that a
# generated backend and the hand-kept host copy can be compared with diff:
#   IFoo decl m(params)            pure virtual methods, in declaration order
#   IFoo const N m                 TRANSACTION_m = FIRST_CALL_TRANSACTION + N
#   IFoo stub N m args...          onTransact: case code, method called, parcel reads and writes
#   IFoo proxy N m oneway|- args...  BpFoo::m: code sent, flags, parcel writes and reads
#   Bar field name type            parcelable fields, in declaration order
#   Bar read|write names...        field order on the wire
# Dies when the header's methods or fields are not, by name and order, those of the API dump, or
# when a method has no stub, proxy or constant: a summary that silently lost them would compare
# equal to another one that lost them too.
#   ndk_shape.pl [--number-by-order] DUMP_DIR INCLUDE_DIR SRC_DIR
# --number-by-order: constants from declaration order (for compilers that do not emit them).
use strict;
use warnings;
use File::Find;

my $by_order = @ARGV && $ARGV[0] eq '--number-by-order' ? shift : 0;
@ARGV == 3 or die "usage: ndk_shape.pl [--number-by-order] DUMP_DIR INCLUDE_DIR SRC_DIR\n";
my ($dump_dir, $include_dir, $src_dir) = @ARGV;
my $meta = qr/^getInterface(?:Version|Hash)$/;

sub slurp {
    my ($path) = @_;
    open(my $f, '<', $path) or die "ndk_shape: $path: $!\n";
    local $/;
    my $text = <$f>;
    $text =~ s{//[^\n]*}{}g;
    $text =~ s/\s+/ /g;
    return $text;
}

sub norm {
    my ($s) = @_;
    $s =~ s/\s+/ /g;
    $s =~ s/^ | $//g;
    $s =~ s/ ?([<>(),&*]) ?/$1/g;
    $s =~ s/([,&*])/$1 /g;
    return $s;
}

sub differ {
    my ($what, $got, $want) = @_;
    die "ndk_shape: $what: backend has (@$got), the interface declares (@$want)\n"
        if "@$got" ne "@$want";
}

my %source;
find(sub { $source{$_} = $File::Find::name if /\.cpp$/ }, $src_dir);
my @dumps;
find(sub { push @dumps, $File::Find::name if /\.aidl$/ }, $dump_dir);

for my $file (sort @dumps) {
    open(my $f, '<', $file) or die "ndk_shape: $file: $!\n";
    my @lines = <$f>;
    my $all = join('', @lines);
    my ($package) = $all =~ /^package ([\w.]+);/m or die "ndk_shape: no package in $file\n";
    my ($kind, $name) = $all =~ /\b(interface|parcelable) (\w+)/ or die "ndk_shape: $file?\n";
    (my $dir = $package) =~ s{\.}{/}g;
    my $header = slurp("$include_dir/aidl/$dir/$name.h");
    my $cpp_path = $source{"$name.cpp"} or die "ndk_shape: no $name.cpp under $src_dir\n";
    my $cpp = slurp($cpp_path);

    if ($kind eq 'parcelable') {
        my @want = map { /(\w+)(?: ?=[^;]*)?;\s*$/ ? $1 : () } grep { !/^package / } @lines;
        my ($body) = $header =~ /static const char\* ?descriptor;(.*?)binder_status_t readFromParcel/
            or die "ndk_shape: no fields found in $name.h\n";
        my @fields;
        for my $decl (split /;/, $body) {
            $decl =~ s/=.*//;
            next if $decl =~ /^ ?$/;
            my ($type, $field) = $decl =~ /^ ?(.*\S) (\w+) ?$/ or die "ndk_shape: $name: '$decl'?\n";
            $type = norm($type);
            push @fields, $field;
            print "$name field $field $type\n";
        }
        differ("$name fields", \@fields, \@want);
        for (['read', 'readFromParcel'], ['write', 'writeToParcel']) {
            my ($label, $fn) = @$_;
            my ($b) = $cpp =~ /${name}::$fn ?\((.*?)(?=binder_status_t ${name}::|$)/
                or die "ndk_shape: no $name::$fn\n";
            my @order = $b =~ /_aidl_ret_status ?= ?[\w:]+ ?\( ?\w+ ?, ?&?([A-Za-z]\w*) ?\)/g;
            print join(" ", $name, $label, @order), "\n";
        }
        next;
    }

    my @want = map { /(\w+) ?\(/ ? $1 : () } grep { !/^\s*(?:package|interface)\b/ } @lines;
    my (@decl, %seen);
    while ($header =~ /virtual ::ndk::ScopedAStatus (\w+) ?\((.*?)\) ?= ?0 ?;/g) {
        next if $1 =~ $meta;
        push @decl, $1;
        print "$name decl $1(" . norm($2) . ")\n";
    }
    differ("$name methods", \@decl, \@want);

    my @consts;
    if ($by_order) {
        @consts = map { [$_, $decl[$_]] } 0 .. $#decl;
    } else {
        while ($header =~ /TRANSACTION_(\w+) ?= ?FIRST_CALL_TRANSACTION ?\+ ?(\d+)/g) {
            push @consts, [$2, $1] unless $1 =~ $meta;
        }
    }
    print "$name const $_->[0] $_->[1]\n" for @consts;
    $seen{const}{$_->[1]}++ for @consts;

    (my $stem = $name) =~ s/^I//;
    my ($stubs) = $cpp =~ /^(.*?)Bp${stem}::/ or die "ndk_shape: no Bp$stem in $name.cpp\n";
    my ($proxies) = $cpp =~ /(::ndk::ScopedAStatus Bp${stem}::.*?)(?:Bn${stem}::|$)/;
    # A parcel call names the parcel first, or is a method of the value given the parcel.
    my $io = qr/\( ?_aidl_(?:in|out)(?:\.get\(\))? ?, ?&?(in_\w+|_aidl_return) ?\)/;
    $io = qr/$io|\( ?&?(in_\w+|_aidl_return) ?\) ?(?:->|\.) ?\w+ ?\( ?_aidl_(?:in|out)\b/;
    for my $case (split /(?=case ?\( ?FIRST_CALL_TRANSACTION ?\+)/, $stubs) {
        my ($code) = $case =~ /^case ?\( ?FIRST_CALL_TRANSACTION ?\+ ?(\d+)/ or next;
        my ($method) = $case =~ /_aidl_impl ?-> ?(\w+) ?\(/
            or die "ndk_shape: $name: case $code calls no method\n";
        next if $method =~ $meta;
        my @args;
        push @args, $1 // $2 while $case =~ /$io/g;
        print join(" ", $name, "stub", $code, $method, @args), "\n";
        $seen{stub}{$method}++;
    }
    for my $fn (split /(?=::ndk::ScopedAStatus Bp${stem}::)/, $proxies // '') {
        my ($method) = $fn =~ /^::ndk::ScopedAStatus Bp${stem}::(\w+)/ or next;
        next if $method =~ $meta;
        my ($code, $flags) = $fn =~
            /AIBinder_transact ?\([^,]*, ?\( ?FIRST_CALL_TRANSACTION ?\+ ?(\d+)[^)]*\) ?,[^,]*,[^,]*, ?([^;]*)/
            or die "ndk_shape: Bp${stem}::$method sends no FIRST_CALL_TRANSACTION + N\n";
        my @args;
        push @args, $1 // $2 while $fn =~ /$io/g;
        my $oneway = $flags =~ /FLAG_ONEWAY/ ? "oneway" : "-";
        print join(" ", $name, "proxy", $code, $method, $oneway, @args), "\n";
        $seen{proxy}{$method}++;
    }
    for my $where ('const', 'stub', 'proxy') {
        for my $method (@decl) {
            my $n = $seen{$where}{$method} // 0;
            die "ndk_shape: $name.$method has $n ${where}s, not one\n" if $n != 1;
        }
    }
}
