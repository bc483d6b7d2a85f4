// The language manual that users read from within the program. A few of its lines are kept although the language does
// otherwise, since users know and quote them: seven array dimensions, `float[] f` as a parameter, and a short list
// that is said to set the first element only. docs/formula-language.md tells it as it is.

#include "qvt_sci.h"

const char* qvt_sci_explanations()
{
    return &R"MANUAL(
QVT_SCI RUN TIME COMPILER (FORMULAS) INTRODUCTION
=================================================

QVT_SCI is a language close to C. Its source is compiled when the program needs it: a friction law, the depth of a
release area, the code of a class, a macro. It is made for formulas: arithmetic on numbers and arrays, a little text,
access to files and to the objects of the program.

Code consists of variables and functions:

    double density = 300;              // global variable
    double shear(double p)             // function
    {
      double mu = 0.155;               // local variable
      return mu*p;
    }

The program that uses the code says which functions it calls. All others are yours.


SOME FUNDAMENTALS/PECULIARITIES OF C SYNTAX
===========================================

SUPPORTED DATA TYPES
--------------------

    void       functions that return nothing
    char       character, -128 to 127
    int        integer, 32 bits, also every result of a comparison (0 or 1)
    float      floating point number, 32 bits
    double     floating point number, 64 bits
    FILE*      an open file
    FUNC*      a function

There are arrays of all types but void. A string is an array of char that ends with a null byte:

    char name[20] = "Obersee";         // 7 characters and the null byte, the rest is unused

A value is converted where it meets another type. In an expression the smaller type becomes the larger one, in the
order char, int, float, double. In an assignment the right side becomes what the left side is, in a call the argument
what the function wants. (type) converts by hand:

    int i = 2.7;                       // 2
    double x = 1/2;                    // 0: both are int, so this is an integer division
    double y = 1/2.0;                  // 0.5
    double z = (double)1/2;            // 0.5

Numbers:

    12                                 // int, always decimal: there are no hexadecimal or octal numbers
    1.5   .5   2.   1e-3   1.5e3       // double
    'A'   '\n'   '\t'   '\\'           // char: a letter, new line, tab, backslash

GENERAL
-------

A statement ends with a semicolon. Braces { } make one statement out of several. Names consist of letters, digits and
"_", begin with no digit and are case sensitive.

    // comment to the end of the line
    /* comment
       over several lines */

Variables are declared before they are used, in a function before its first statement:

    double f(double x)
    {
      int i;                           // declarations first
      double sum = 0;                  // initialised at each call
      static int calls = 0;            // initialised at the first call only, keeps its value
      ++calls;                         // then statements
      ...
    }

A variable without a value is 0. Local variables keep their memory between calls, so a local variable without an
initial value still has the one that the last call left.

Operators, the weakest first; those of one line are of equal strength and work from the left to the right:

    =  +=  -=  *=  /=                  // assignment; its value is the assigned one
    a ? b : c                          // b if a is not 0, else c
    ||                                 // or
    &&                                 // and
    ==  !=  <  >  <=  >=
    +  -
    *  /  %                            // % is the remainder of integers
    .  ^                               // dot product, cross product of arrays
    **                                 // power
    -a  !a  (type)a
    a++  a--  ++a  --a  a[i]

&& and || convert both sides to int first, so that 0.5 && 1 is 0. A lone condition is tested as it is: if(0.5) is
true. The right side of && and || is only computed if the left one does not decide.

Statements:

    if(a > b) x = a; else x = b;

    for(i = 0; i < n; i++) sum += a[i];

    while(x > 1) x /= 2;

    for(;;)                            // for ever
    {
      if(x < 0) continue;              // on to the next turn
      if(x > 9) break;                 // leave the loop
      ...
    }

    return x;                          // leave the function with a result
    return;                            // leave a void function

A for loop has all three expressions or none. A break or continue outside of any loop starts the function anew.

Functions:

    double square(double x)            // type of the result, name, parameters
    {
      return x*x;
    }

    double cube(double x);             // prototype: the function is defined further down, or by the program

A function is known from its declaration on. If it ends without return, its result is the one of the function that
returned last.

Arrays begin with index 0, arrays of several dimensions are stored row by row. Max 7 array dimensions allowed.

    double a[3];                       // a[0], a[1], a[2]
    double m[2][3];                    // m[0][0] ... m[1][2]; m[1] is the second row
    double b[3] = {1, 2, 3};
    double c[n];                       // the first dimension may be an expression: allocated when it is reached
    double d[3] = 2.7;                 // all elements 2.7
    double e[3] = {2.7};               // e[0] = 2.7

An array as parameter has no size in its first dimension:

    double sum(int n, double a[])
    double f(int i, float[] f)
    double trace(double m[][3])

MACROS
------

    #define N 10                       replaces N by 10, from here to the end of the code
    #include "file.cint"               inserts the file

A line must begin with the "#". The value of a #define is the whole rest of its line, comments included. Names are
replaced as whole words, but also within comments and strings: with the line above, "N" prints as 10. A name may be
defined again further down; from there on it has the new value. Macros have no parameters.

A file is inserted once, even if several #include lines name it. It is looked for under the name as written, then in
the program's include directories. Line numbers in error messages count the inserted lines.

Code that is read directly from a file, such as the code of a class, knows neither #define nor #include: such lines
are ignored, with a message.


EXTENSIONS TO C SYNTAX
======================

Power:

    x = 2**10;                         // 1024
    x = 2**3**2;                       // 64: from the left to the right
    x = -2**2;                         // 4: the sign belongs to the 2

Arithmetic with whole arrays and rows:

    double a[3] = {1, 2, 3}, b[3] = {4, 5, 6}, c[3], s;
    c = a + b;                         // each element: 5 7 9; in the same way -, *, /
    c = 2*a;                           // 2 4 6
    c += a;                            // in the same way -=, *=, /=
    c = {7, 8, 9};                     // list
    s = a . b;                         // dot product, a double: 32
    c = a ^ b;                         // cross product
    s = |a|;                           // length, a double: 3.74166

If the arrays have different lengths the shorter one starts over again: {1, 2, 3} + {10, 20} is {11, 22, 13}. The
array on the left of an assignment never changes its length. The cross product of two arrays of length 2 has two
elements: c[1] is the 2D cross product and c[0] its negative. Write blanks around the dot of a dot product, since a.5
reads as a and .5. There is no arithmetic with arrays whose length is unknown, nor a conversion of a whole array to
another type: b = b + 1.0 fails for an array of int, b += 1.0 works. What is computed from arrays is an array too: it
is no argument for sin(x), and no condition.

Arrays that change their size:

    double a[n];                       // allocated with n elements, all 0
    resize(a, 2*n);                    // keeps the elements, new ones are 0; returns the number of elements

Printing without a format:

    print "x =", x, "a =", a;          // x = 0.5 a = 1 2 3

Each value has a blank before it. Arrays print with all their elements, char arrays as text, a single char as its
number.

Parameters are passed by reference: a function that assigns to a parameter changes the variable of its caller, if the
variable is of the parameter's type. Otherwise the function gets a converted copy.

    void swap(double x, double y)
    {
      double t = x;
      x = y;
      y = t;
    }

For the same reason scanf takes variables as they are, without "&":

    sscanf("3 4.5", "%d %lf", i, x);

Functions as values:

    double twice(double x) { return 2*x; }
    FUNC *f = twice;
    double y = f(4);                   // 8
    double z = func_call(f, 4);        // the same
    FUNC *table[2];
    table[0] = twice;
    z = table[0](4);                   // the same
    f = func_addr("twice");            // by name; NULL if there is no such function

The result of such a call is always a double. The number of arguments and their types are checked when the call is
made. The keywords print, printf, scanf, exec and their like are no functions in this sense.

Code that is made at run time:

    int errors = exec("x = 2*x; print x;");

The code sees all names that the calling code sees. It is either the body of a function, as here, or contains
void main(), which is then called. The result is 0, or the number of errors.

Names of the program:

    extern double temperature;         // a variable that the program provides
    extern double x;                   // within a function: the global variable x

Adjacent strings are one: "KOR" "VO" is "KORVO", on several lines too.


LIMITATIONS
===========

    - No recursion: a function must not be active twice, neither directly nor by way of others.
    - No structures, unions, enumerations, typedef, switch, do, goto, sizeof, const, unsigned, long or short.
    - No pointers but FILE* and FUNC*; no operators & and * on addresses.
    - No operators %=, <<, >>, ~, no bitwise operators, no comma operator.
    - Declarations only at the top of a function or outside of functions; blocks have no variables of their own.
    - Loops and calls together may be nested 100 deep.
    - Functions of the program take at most 50 arguments, calls by way of a FUNC* at most 100.
    - Only the first dimension of an array may be left out or be an expression.
    - Strings know the escapes \" \n \t only, characters '\n' '\t' '\\' only.
    - There is no plus sign before a value: write x, not +x.
    - The exponent of a number is written with e or E. With d or D it is accepted but does not count: 1.5D3 is 1.5.
    - printf and the other formatted functions take one argument for each "%" of the format: a format with arguments
      cannot print a percent sign by "%%". Too many arguments are ignored; too few cut the format off.


HINTS AND TRICKS
================

Errors in the source: Parsing already stops at the first syntax error and only this first error is reported. The
message shows the lines around it, with an "X" before the line where it was noticed, which may be the one after the
mistake.

Errors at run time: a division by zero, an index outside of its array, the call of a function that nobody provides, a
file that is not open, a name that nobody provides and a string that is too short for its text are reported with a
message that names the function and the line. An array cannot be resized while a parameter refers to it.

Speed:

    - Loop overhead: avoid short loops. Three statements that are written out are faster than a loop of three turns.
    - Arithmetic with whole arrays is faster than a loop over their elements.
    - Compute what does not change before the loop.
    - x*x is faster than x**2 and pow(x, 2).
    - Let types agree: each conversion costs time.

Constants: pi, e and sqrt2 are predefined and cannot be changed. Local variables may have these names.

Strings: char s[80] holds 79 characters. A text that is too long is cut by strcpy, strcat and fgets; sprintf reports
an error. Compare with strcmp(s, t) == 0, never with s == t.

Reading a file line by line:

    FILE *f = fopen("points.txt", "r");
    char line[200];
    double x, y;
    if(f != NULL)
    {
      while(fgets(line, 200, f))
        if(sscanf(line, "%lf %lf", x, y) == 2) print x, y;
      fclose(f);
    }

Sorting indices by a function of your own:

    double h[4] = {3, 1, 4, 2};
    int byHeight(int i, int j) { return h[i] < h[j] ? -1 : h[i] > h[j]; }
    int order[4];
    int oqsort(int n, int order[], FUNC *compare);

    oqsort(4, order, byHeight);        // order is 1 3 0 2: h[order[0]] is the smallest
    dqsort(4, h, order);               // the same without a function

Values between calls: global variables and static local ones keep theirs, so that a formula can count or remember.

Equations: solveLES for small dense systems, solve_pcg for large sparse symmetric ones.


KNOWN ISSUES
============

    - A string that contains a #defined word is changed like all other text.
    - Lines that end with carriage return and new line count twice in error messages.
    - A comment to the end of the line in the very last line needs a new line behind it.
    - A function that assigns to its parameter changes even a number that it is called with: after f(3), where f
      sets its parameter to 4, the next turn of this call passes 4.
    - A return from a function with arrays of variable size leaves these allocated until its next call.
    - && and || convert to int: write a != 0 && b != 0 for numbers with decimals.
    - rand() is shared with the rest of the program.
    - drand() can give exactly 1.
    - round(-1.5) is -1: half numbers are rounded up.
)MANUAL"[1];   // behind the line end that opens the literal
}
